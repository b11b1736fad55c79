#include "common/skinmovie.h"

#include "common/skinpicture.h"

#include <QFileInfo>
#include <QLabel>

SkinMovie::SkinMovie(const char* name, QObject* parent)
    : QMovie(SkinPicture::path(name), QByteArray(), parent), m_path(fileName())
{
}

void SkinMovie::startIn(QLabel* label)
{
    stop();
    const QString doubled = SkinPicture::doubledPath(m_path);
    const QString file = label->devicePixelRatioF() > 1 && QFileInfo::exists(doubled) ? doubled : m_path;
    // Frames of a file named "@2x" come with their ratio, so that the label lays them out in points.
    if (file != fileName())
        setFileName(file);
    label->setMovie(this);
    start();
}

QSize SkinMovie::sizeInPoints() const
{
    const QPixmap frame = currentPixmap();
    return frame.size() / frame.devicePixelRatio();
}
