#pragma once

#include "common/skinpicture.h"

#include <QWidget>

#include <memory>

struct QMusicInfo;

namespace Ui {
class MusicDetailedInfoWidget;
}

/// The panel at the right that shows one song's cover and tags.
class MusicDetailedInfoWidget : public QWidget
{
    Q_OBJECT

public:
    explicit MusicDetailedInfoWidget(QWidget* parent = nullptr);
    ~MusicDetailedInfoWidget() override;

    /// Shows the song and the panel; no song: forgets the one shown, and hides the panel. The song must
    /// outlive its being shown.
    void SetMusicDetailedInfo(QMusicInfo* song);
    void ShowMusicInfo();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    std::unique_ptr<Ui::MusicDetailedInfoWidget> ui;
    SkinPicture m_face;
    QMusicInfo* m_pMusicInfo = nullptr;
};
