#pragma once

#include "common/skinpicture.h"

#include <QRect>

class QPainter;

/// What lies behind the panel of one song: its face, and a line under each row of fields.
class DetailFace
{
public:
    DetailFace();

    void paint(QPainter& painter, const QRect& panel, const QRect& fields, int rows) const;

private:
    SkinPicture m_picture;
};
