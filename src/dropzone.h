#pragma once

#include "common/skinpicture.h"

#include <QPoint>

class QWidget;

/// Where files are dropped in the local mode: a picture that names the formats a drop takes, over the button
/// that opens files, both in the middle of what the right column leaves of an area.
class DropZone
{
public:
    DropZone();

    static void placeButton(QWidget& button, const QSize& area);
    /// The picture with the formats, over a button of this size that stands in its place.
    void paint(QPainter& painter, const QSize& area, const QSize& button) const;

private:
    static QPoint buttonPlace(const QSize& area, const QSize& button);
    static void nameFormats(QPainter& painter, const QPoint& middle);

    SkinPicture m_picture;
};
