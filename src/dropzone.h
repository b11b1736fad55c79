#pragma once

#include "common/skinpicture.h"

#include <QPoint>

class QWidget;

/// Where files are dropped in the local mode: a picture over the button that opens them, both in the middle
/// of what the right column leaves of an area.
class DropZone
{
public:
    DropZone();

    static void placeButton(QWidget& button, const QSize& area);
    /// The picture, over a button of this size that stands in its place.
    void paint(QPainter& painter, const QSize& area, const QSize& button) const;

private:
    static QPoint buttonPlace(const QSize& area, const QSize& button);

    SkinPicture m_picture;
};
