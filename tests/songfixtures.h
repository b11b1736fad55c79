#pragma once

#include "filebytes.h"
#include "itunes/itunestrackrecord.h"
#include "qiorvoutil.h"
#include "qmusicinfo.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QPixmap>

#include <memory>
#include <random>

/// Songs, pictures and modes for tests.
namespace Fixtures {
/// Puts a clean mode in force and the former one back.
class ModeGuard
{
public:
    explicit ModeGuard(bool local) : m_former(QIOrvoUtil::m_cleanMode) { QIOrvoUtil::m_cleanMode = local; }
    ~ModeGuard() { QIOrvoUtil::m_cleanMode = m_former; }
    Q_DISABLE_COPY(ModeGuard)

private:
    bool m_former;
};

struct Texts
{
    QByteArray title = "Täxt";
    QByteArray artist = "Artist";
    QByteArray album = "Album";
    QByteArray genre = "Genre";
    quint64 year = 1999;
    quint64 track = 7;
    QString coverPath;
};

/// A song with the data of one mode, and what those data point to.
struct Song
{
    Texts texts;
    iTunesTrackRecord record = {};
    QMusicInfo info;
};

inline std::unique_ptr<Song> makeSong(bool local, const Texts& texts = Texts())
{
    auto song = std::make_unique<Song>();
    song->texts = texts;
    if (local) {
        song->info.localInfo = std::make_unique<LocalMusicInfo>();
        LocalMusicInfo& info = *song->info.localInfo;
        info.title = QString::fromUtf8(texts.title);
        info.artist = QString::fromUtf8(texts.artist);
        info.album = QString::fromUtf8(texts.album);
        info.genre = QString::fromUtf8(texts.genre);
        info.year = qint64(texts.year);
        info.trackNumber = qint64(texts.track);
        info.coverPath = texts.coverPath;
        return song;
    }
    song->record.name = song->texts.title.constData();
    song->record.artist = song->texts.artist.constData();
    song->record.album = song->texts.album.constData();
    song->record.genre = song->texts.genre.constData();
    song->record.year = texts.year;
    song->record.trackNumber = texts.track;
    song->info.track = &song->record;
    song->info.coverPath = texts.coverPath;
    return song;
}

/// A picture without two equal neighbours, different for every seed.
inline QImage noise(int width, int height, unsigned seed = 1)
{
    std::mt19937 random(seed);
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, 0xff000000u | (random() & 0xffffffu));
    return image;
}

inline QImage plain(int width, int height, const QColor& colour)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(colour);
    return image;
}

/// Saves under a name without an extension, as cover files have.
inline QString savePicture(const QImage& image, const QString& path, const char* format = "PNG")
{
    if (!image.save(path, format))
        qFatal("cannot save %s", qUtf8Printable(path));
    return path;
}

/// A picture of the skin; one is made where the build has laid none beside the test program.
inline QImage skinPicture(const QString& name, const QImage& standIn)
{
    const QString path = QIOrvoUtil::getResourcePath() + QLatin1String("/Image/") + name;
    if (!QFile::exists(path)) {
        QDir().mkpath(QIOrvoUtil::getResourcePath() + QLatin1String("/Image"));
        // Complete before it has the name: other test programs may be looking for it.
        const QString draft = path + QString::number(QCoreApplication::applicationPid());
        savePicture(standIn, draft);
        if (!QFile::rename(draft, path))
            QFile::remove(draft);
    }
    return QImage(path);
}

inline QImage genericCover()
{
    return skinPicture(QStringLiteral("big.png"), plain(300, 300, QColor(10, 120, 200)));
}

/// The pixels alone, so that formats do not count in comparisons.
inline QImage pixels(const QImage& image)
{
    QImage result = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    result.setDevicePixelRatio(1);
    return result;
}

inline QImage pixels(const QPixmap& pixmap)
{
    return pixels(pixmap.toImage());
}
} // namespace Fixtures
