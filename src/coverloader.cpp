#include "coverloader.h"

#include "qiorvoutil.h"

#include <QCache>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>

namespace {
constexpr int iconEdge = 300;
constexpr int gridEdge = 120; // no smaller than the grid's icon box, so that an icon prefers it there
constexpr int longestEdge = 2048;
constexpr qint64 maxDecodedPixels = 64ll * 1024 * 1024;
constexpr qint64 kibibyte = 1024;

/// What was made of one state of one file. A picture that does not load is remembered, too.
struct Cover
{
    QPixmap picture;
    QIcon icon;
};

QCache<QString, Cover>& cache()
{
    static QCache<QString, Cover> covers(192 * 1024); // KiB
    return covers;
}

qint64 decodings = 0;

/// Names the file in its present state; empty when there is no file.
QString stateKey(const QString& path)
{
    const QFileInfo file(path);
    if (path.isEmpty() || !file.isFile())
        return QString();
    return path + QLatin1Char('\n') + QString::number(file.lastModified().toMSecsSinceEpoch()) +
           QLatin1Char('\n') + QString::number(file.size());
}

QPixmap squared(const QPixmap& picture)
{
    if (picture.width() == picture.height())
        return picture;
    return picture.scaled(iconEdge, iconEdge, Qt::IgnoreAspectRatio, Qt::FastTransformation);
}

/// The picture itself and a small copy, so that a grid scales the large one once and not at every repaint.
QIcon iconOf(const QPixmap& picture)
{
    const QPixmap square = squared(picture);
    QIcon icon(square);
    if (square.width() > 2 * gridEdge)
        icon.addPixmap(square.scaled(gridEdge, gridEdge, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    return icon;
}

Cover makeCover(const QString& path)
{
    QFile file(path);
    Cover cover;
    if (file.open(QIODevice::ReadOnly))
        cover.picture = QPixmap::fromImage(CoverLoader::decode(&file, longestEdge));
    if (!cover.picture.isNull())
        cover.icon = iconOf(cover.picture);
    return cover;
}

Cover coverOf(const QString& path)
{
    const QString key = stateKey(path);
    if (key.isEmpty())
        return Cover();
    if (const Cover* known = cache().object(key))
        return *known;
    const Cover made = makeCover(path);
    const qint64 bytes = 4ll * made.picture.width() * made.picture.height();
    cache().insert(key, new Cover(made), int(bytes / kibibyte) + 1);
    return made;
}
} // namespace

QString CoverLoader::genericCoverPath()
{
    return QIOrvoUtil::getResourcePath() + QLatin1String("/Image/big.png");
}

QPixmap CoverLoader::genericCover()
{
    static const QPixmap cover = load(genericCoverPath());
    return cover;
}

QPixmap CoverLoader::load(const QString& path)
{
    return coverOf(path).picture;
}

QIcon CoverLoader::icon(const QString& path)
{
    static const QIcon generic(genericCover());
    const QIcon icon = coverOf(path).icon;
    return icon.isNull() ? generic : icon;
}

QImage CoverLoader::decode(QIODevice* device, int edge)
{
    ++decodings;
    QImageReader reader(device);
    reader.setDecideFormatFromContent(true);
    const QSize size = reader.size();
    const bool tooLarge = size.width() > edge || size.height() > edge;
    if (tooLarge && size.isValid())
        reader.setScaledSize(size.scaled(edge, edge, Qt::KeepAspectRatio));
    // Only JPEG scales while it decodes; every other format takes its full size first.
    if (reader.format() != "jpeg" && qint64(size.width()) * size.height() > maxDecodedPixels)
        return QImage();
    return reader.read();
}

void CoverLoader::setMemoryLimit(qint64 bytes)
{
    cache().setMaxCost(int(bytes / kibibyte));
}

qint64 CoverLoader::decodeCount()
{
    return decodings;
}
