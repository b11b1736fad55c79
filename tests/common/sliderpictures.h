#pragma once

#include "common/qsliderctrl.h"

#include <QTemporaryDir>
#include <QtTest>

/// Sliders in tests, drawn from plain pictures.
namespace SliderPictures {
constexpr int handleWidth = 20;
constexpr int half = handleWidth / 2;
constexpr QRgb cellColours[] = {qRgb(10, 200, 10), qRgb(200, 200, 10), qRgb(10, 10, 200),
                                qRgb(120, 120, 120)};
constexpr QRgb trackColour = qRgb(200, 220, 230);
constexpr QRgb fillColour = qRgb(20, 120, 200);

/// What a screen of the ratio would show of the widget; transparent where nothing is drawn.
inline QImage shownAt(QWidget& widget, int ratio)
{
    QImage screen(widget.size() * ratio, QImage::Format_ARGB32_Premultiplied);
    screen.setDevicePixelRatio(ratio);
    screen.fill(Qt::transparent);
    widget.render(&screen, QPoint(), QRegion(), QWidget::DrawChildren);
    return screen;
}

inline QSliderCtrlBtn* handleOf(qSliderCtrl& slider)
{
    return slider.findChild<QSliderCtrlBtn*>();
}

/// The pictures: a track and its filled part, 100 x 8, a high track, and a handle, 20 x 12.
class Folder
{
public:
    Folder()
    {
        QImage strip(4 * handleWidth, 12, QImage::Format_RGB32);
        for (int x = 0; x < strip.width(); ++x)
            for (int y = 0; y < strip.height(); ++y)
                strip.setPixel(x, y, cellColours[x / handleWidth]);
        strip.save(path("handle.png"));
        QImage bar(100, 8, QImage::Format_RGB32);
        bar.fill(trackColour);
        bar.save(path("track.png"));
        bar.fill(fillColour);
        bar.save(path("fill.png"));
        bar.copy(0, 0, 100, 30).save(path("high.png"));
    }
    QString path(const char* name) const { return m_folder.filePath(name); }
    /// 200 points wide: a track of 180 and a handle of 20.
    void dress(qSliderCtrl& slider) const
    {
        slider.setBottomImage(path("track.png"));
        slider.setTopImage(path("fill.png"));
        slider.setWidth(200);
        slider.setBtnImage(path("handle.png"));
    }

private:
    QTemporaryDir m_folder;
};
} // namespace SliderPictures
