#pragma once

#include "common/skinpicture.h"

#include <QWidget>

#include <memory>

struct QMusicInfo;

namespace Ui {
class ShowMusicInfoWidget;
}

/// A small card without a frame that shows one song's cover and tags; a press on it closes it.
class ShowMusicInfoWidget : public QWidget
{
    Q_OBJECT

public:
    explicit ShowMusicInfoWidget(QWidget* parent = nullptr);
    ~ShowMusicInfoWidget() override;

    void Init();
    /// Shows the song's data as they are now.
    void setMusicInfo(QMusicInfo* song);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    std::unique_ptr<Ui::ShowMusicInfoWidget> ui;
    std::unique_ptr<SkinPicture> m_face;
};
