#include "covers/coverloader.h"

#include "collection/filestate.h"
#include "common/picturelimits.h"
#include "common/skinpicture.h"
#include "covers/covericonengine.h"

#include <QCache>
#include <QCoreApplication>
#include <QFile>
#include <QImageReader>

#include <memory>

namespace {
constexpr int remembered = 20000; // files whose picture size is known

/// A picture of a file, made for one edge in pixels.
using PictureKey = QPair<FileState, int>;
/// Costs are KiB.
using PictureCache = QCache<PictureKey, QPixmap>;

/// What has been read. What is drawn and what it was scaled from are kept apart: the sources of a screen full
/// of new covers would drive out the small pictures that the next repaint needs.
struct Memory
{
    QCache<FileState, QSize> sizes{remembered}; ///< empty for a file that holds no picture
    PictureCache sources;
    PictureCache drawn;
    FileState genericState;
    QPixmap generic;
};

constexpr qint64 standardLimit = 192ll * 1024 * 1024;
qint64 memoryLimit = standardLimit;
qint64 decodings = 0;
std::unique_ptr<Memory> theMemory;

void applyLimit(Memory& memory)
{
    const int kibibytes = int(memoryLimit / 1024);
    memory.sources.setMaxCost(kibibytes / 3);
    memory.drawn.setMaxCost(kibibytes - kibibytes / 3);
}

Memory& memory()
{
    if (!theMemory) {
        theMemory = std::make_unique<Memory>();
        applyLimit(*theMemory);
        qAddPostRoutine([] { theMemory.reset(); }); // pixmaps must not outlive the application object
    }
    return *theMemory;
}

void remember(PictureCache& cache, const PictureKey& key, const QPixmap& picture)
{
    const qint64 bytes = qint64(picture.width()) * picture.height() * picture.depth() / 8;
    cache.insert(key, new QPixmap(picture), int(bytes / 1024) + 1);
}

bool isSquare(const QSize& size)
{
    return size.width() == size.height();
}

/// The size of a larger picture once its longer edge is brought down to the given one.
QSize boundedSize(const QSize& size, int edge)
{
    if (size.width() <= edge && size.height() <= edge)
        return size;
    return size.scaled(edge, edge, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
}

/// The size of the picture, which its content tells the kind of; empty when there is none to read.
QSize readableSize(QImageReader& reader)
{
    reader.setDecideFormatFromContent(true);
    return PictureLimits::readableSize(reader);
}

QImage read(QImageReader& reader, const QSize& size, int edge)
{
    const QSize wanted = boundedSize(size, edge);
    if (wanted != size)
        reader.setScaledSize(wanted);
    return reader.read();
}

QPixmap decodeFile(const QString& path, const FileState& state, int edge)
{
    ++decodings;
    QSize size;
    QPixmap picture;
    QFile file(path);
    if (file.open(QIODevice::ReadOnly)) {
        QImageReader reader(&file);
        size = readableSize(reader);
        if (!size.isEmpty())
            picture = QPixmap::fromImage(read(reader, size, edge));
    }
    memory().sizes.insert(state, new QSize(picture.isNull() ? QSize() : size));
    return picture;
}

/// A picture that is small anyway is kept once, whatever it was read for.
PictureKey sourceKey(const FileState& state, const QSize& size, int edge)
{
    return {state, qMax(size.width(), size.height()) <= CoverLoader::songEdge ? CoverLoader::songEdge : edge};
}

/// The file's picture with its longer edge no longer than the given one.
QPixmap source(const QString& path, const FileState& state, int edge)
{
    if (!state.exists())
        return {};
    if (const QSize* size = memory().sizes.object(state)) {
        if (size->isEmpty())
            return {};
        if (const QPixmap* known = memory().sources.object(sourceKey(state, *size, edge)))
            return *known;
    }
    const QPixmap picture = decodeFile(path, state, edge);
    if (!picture.isNull())
        remember(memory().sources, sourceKey(state, picture.size(), edge), picture);
    return picture;
}

QSize sizeOf(const QString& path, const FileState& state)
{
    if (!state.exists())
        return {};
    if (const QSize* size = memory().sizes.object(state))
        return *size;
    source(path, state, CoverLoader::songEdge);
    const QSize* size = memory().sizes.object(state);
    return size ? *size : QSize();
}

/// A square of the given edge made of the file's picture as it is now.
QPixmap squareFrom(const QString& path, const FileState& state, const QSize& size, int edge)
{
    if (isSquare(size)) {
        const QPixmap picture = source(
            path, state, edge <= CoverLoader::songEdge ? CoverLoader::songEdge : CoverLoader::longestEdge);
        return picture.width() == edge
                   ? picture
                   : picture.scaled(edge, edge, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    }
    const QPixmap picture = source(path, state, CoverLoader::longestEdge);
    // Oddity 31: stretched without smoothing.
    const QPixmap square = picture.scaled(CoverLoader::songEdge, CoverLoader::songEdge, Qt::IgnoreAspectRatio,
                                          Qt::FastTransformation);
    return edge == CoverLoader::songEdge
               ? square
               : square.scaled(edge, edge, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

QPixmap drawnCover(const QString& path, const FileState& state, int edge)
{
    if (edge <= 0)
        return {};
    const PictureKey key(state, edge);
    if (const QPixmap* known = memory().drawn.object(key))
        return *known;
    // An icon may outlive the file that it was made of; then it shows what is there now.
    const FileState now = FileState::of(path);
    const QSize size = sizeOf(path, now);
    if (size.isEmpty())
        return {};
    const QPixmap square = squareFrom(path, now, size, edge);
    if (!square.isNull())
        remember(memory().drawn, PictureKey(now, edge), square);
    return square;
}

QIcon iconOf(const QString& path)
{
    const FileState state = FileState::of(path);
    const QSize size = sizeOf(path, state);
    if (size.isEmpty())
        return {};
    const int edge = isSquare(size) ? qMin(size.width(), CoverLoader::longestEdge) : CoverLoader::songEdge;
    return QIcon(
        new CoverIconEngine(edge, [path, state](int wanted) { return drawnCover(path, state, wanted); }));
}
} // namespace

QString CoverLoader::genericCoverPath()
{
    return SkinPicture::path("big.png");
}

QPixmap CoverLoader::genericCover()
{
    // Kept outside the bounded memory: every song without a cover holds this one pixmap.
    const QString path = genericCoverPath();
    const FileState state = FileState::of(path);
    if (memory().generic.isNull() || state != memory().genericState) {
        memory().generic = load(path);
        memory().genericState = state;
    }
    return memory().generic;
}

QPixmap CoverLoader::load(const QString& path)
{
    return source(path, FileState::of(path), longestEdge);
}

QSize CoverLoader::pictureSize(const QString& path)
{
    return sizeOf(path, FileState::of(path));
}

QIcon CoverLoader::icon(const QString& path)
{
    const QIcon icon = iconOf(path);
    return icon.isNull() ? iconOf(genericCoverPath()) : icon;
}

QImage CoverLoader::decode(QIODevice* device, int edge)
{
    QImageReader reader(device);
    const QSize size = readableSize(reader);
    return size.isEmpty() ? QImage() : read(reader, size, edge);
}

void CoverLoader::setMemoryLimit(qint64 bytes)
{
    memoryLimit = bytes;
    applyLimit(memory());
}

qint64 CoverLoader::decodeCount()
{
    return decodings;
}
