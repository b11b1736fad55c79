#pragma once

#include "common/skinpicture.h"

#include <QWidget>

#include <memory>

class QKeyEvent;
struct QMusicInfo;

namespace Ui {
class ShowMusicInfoWidget;
}

/// A small card without a frame that shows one song's cover and tags. Any press of the mouse closes it, and
/// any key, which does what it does in the window behind it; but for Escape, which only closes it. It goes
/// with what it belongs to, its parent, once that is not to be seen, and when another view is shown.
class ShowMusicInfoWidget : public QWidget
{
    Q_OBJECT

public:
    explicit ShowMusicInfoWidget(QWidget* parent = nullptr);
    ~ShowMusicInfoWidget() override;

    void Init();
    /// Shows the song's data as they are now.
    void setMusicInfo(QMusicInfo* song);
    /// Shows the card in front, this corner of it here as far as the screen of a point has room.
    void showAt(const QPoint& topLeft, const QPoint& onScreen);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    bool closesAt(const QObject& watched, const QEvent& event) const;
    bool takesKey(const QWidget& receiver, const QKeyEvent& event);

    std::unique_ptr<Ui::ShowMusicInfoWidget> ui;
    std::unique_ptr<SkinPicture> m_face;
};
