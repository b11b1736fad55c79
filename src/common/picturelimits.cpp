#include "common/picturelimits.h"

#include "base/picturelimits.h"

#include <QImageReader>
#include <QIODevice>
#include <QtEndian>

namespace {
/// Where the device begins with a GIF, the size of the screen that its frames are put on: the reader tells
/// another one where that is much larger than the first frame, and makes a picture of it nevertheless.
QSize screenOfGif(QIODevice& device)
{
    constexpr int head = 10;
    constexpr int sizePlace = 6;
    const QByteArray bytes = device.peek(head);
    if (!bytes.startsWith("GIF8") || bytes.size() < head)
        return {};
    const char* const size = bytes.constData() + sizePlace;
    return {qFromLittleEndian<quint16>(size), qFromLittleEndian<quint16>(size + sizeof(quint16))};
}
} // namespace

QSize PictureLimits::readableSize(QImageReader& reader)
{
    if (!reader.canRead()) // opens the device
        return {};
    const QSize screen = screenOfGif(*reader.device());
    const QSize told = reader.size();
    if (told.isEmpty())
        return {};
    const QSize size = told.expandedTo(screen);
    return qint64(size.width()) * size.height() > base::mostPixels ? QSize() : size;
}
