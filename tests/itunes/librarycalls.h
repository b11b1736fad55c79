#pragma once

#include "itunes/delmusiclib.h"
#include "itunes/itunesmusiclibrary.h"
#include "itunes/tunesedit.h"

#include <QByteArray>
#include <QFile>
#include <QHash>
#include <QString>
#include <QStringList>
#include <QVector>

#include <array>

/// The music library's calls in Qt's terms.
namespace LibraryCalls {
struct Reading
{
    iTunesTrackRecord* records = nullptr;
    int count = 0;
};

inline Reading read()
{
    Reading reading;
    GetMusicInfo(&reading.records, &reading.count);
    return reading;
}

inline Reading read(const QString& path)
{
    setITunesLibraryOption(QFile::encodeName(path).constData());
    return read();
}

inline QStringList names(const Reading& reading)
{
    QStringList names;
    for (int i = 0; i < reading.count; ++i)
        names.append(QString::fromUtf8(reading.records[i].name));
    return names;
}

struct Edit
{
    QByteArray name = "New name";
    QByteArray album = "New album";
    QByteArray artist = "New artist";
    QByteArray genre = "Pop";
    int year = 2001;
    QString cover;
};

inline int edit(quint64 id, const Edit& edit)
{
    return set_trackWithPresistentID(EyeTunes::sharedInstance(), id, edit.name.constData(),
                                     edit.album.constData(), edit.artist.constData(), edit.genre.constData(),
                                     edit.year, QFile::encodeName(edit.cover).constData());
}

/// The call with all its buffers, each with a guard behind it that must stay.
template <std::size_t Size>
struct Buffers
{
    std::array<std::array<char, Size + 1>, 6> bytes;

    Buffers()
    {
        for (auto& buffer : bytes) {
            buffer.fill(0);
            buffer.back() = '#';
        }
    }
    int call(quint64 id)
    {
        return get_trackWithPresistentID(EyeTunes::sharedInstance(), id, bytes[0].data(), bytes[1].data(),
                                         bytes[2].data(), bytes[3].data(), nullptr, bytes[4].data(),
                                         bytes[5].data());
    }
    bool guardsStand() const
    {
        for (const auto& buffer : bytes)
            if (buffer.back() != '#')
                return false;
        return true;
    }
    /// Whether all buffers but the given one are empty.
    bool othersAreEmpty(std::size_t except) const
    {
        for (std::size_t i = 0; i < bytes.size(); ++i)
            if (i != except && bytes[i][0] != 0)
                return false;
        return true;
    }
};

inline int writeArtwork(quint64 id, const QString& path)
{
    Buffers<256> buffers;
    qstrncpy(buffers.bytes[4].data(), QFile::encodeName(path).constData(), 256);
    return buffers.call(id);
}

inline QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
} // namespace LibraryCalls
