#include "songs/songediting.h"

#include "audiocore/iaudiotag.h"
#include "covers/coverloader.h"
#include "itunes/eyetunes.h"
#include "itunes/itunestrackrecord.h"
#include "itunes/tunesedit.h"
#include "qiorvoutil.h"
#include "qmusicinfo.h"
#include "songs/songfields.h"
#include "songs/tagcontent.h"

#include <QFile>

#include <array>
#include <deque>
#include <memory>

namespace {
constexpr qint64 maxPictureBytes = 256ll * 1024 * 1024;

/// The whole file; nothing when there is none, or when it is beyond anything that a tag could hold.
QByteArray pictureBytes(const QString& path)
{
    if (path.isEmpty())
        return QByteArray();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > maxPictureBytes) {
        qWarning("the picture %s cannot be used: %s", qUtf8Printable(path),
                 file.isOpen() ? "it is too large" : qUtf8Printable(file.errorString()));
        return QByteArray();
    }
    return file.readAll();
}

/// What another program put into the file since it was read is the user's, too.
QByteArray wantedPicture(IAudioTag& tag, const SongEdit& edit)
{
    const QByteArray held = edit.coverKept ? TagContent::of(tag).picture : QByteArray();
    return held.isEmpty() ? pictureBytes(edit.newCoverPath) : held;
}

void takeCover(LocalMusicInfo& local, const QString& path)
{
    local.coverPath = path;
    QFile file(path);
    const QImage picture =
        file.open(QIODevice::ReadOnly) ? CoverLoader::decode(&file, CoverLoader::songEdge) : QImage();
    *local.cover = picture.isNull() ? CoverLoader::genericCover() : QPixmap::fromImage(picture);
}

SongEditing::Outcome applyLocal(LocalMusicInfo& local, const SongEdit& edit)
{
    local.title = edit.title;
    local.artist = edit.artist;
    local.album = edit.album;
    local.genre = edit.genre;
    local.year = edit.year;
    local.trackNumber = edit.trackNumber;
    // By one of our own. The tag object that stays with the song is left alone: it reads again when it is
    // asked again.
    if (const std::unique_ptr<IAudioTag, ReleaseTag> tag{CreateTag()}) {
        // Also when it cannot be opened: it is the save that tells of the lost edit, every time.
        tag->Open(local.filePath.toStdU32String().c_str());
        if (SongEditing::writeTag(*tag, edit) == 0)
            local.file = FileState::ofEntry(local.filePath);
    }
    if (edit.newCoverPath.isEmpty())
        return {};
    takeCover(local, edit.newCoverPath);
    return {true, true};
}

/// A copy of the text that lasts as long as the program: track records point at it from now on.
char* lastingCopy(const QByteArray& text)
{
    static std::deque<QByteArray> texts;
    texts.push_back(text);
    return texts.back().data();
}

/// The location as the library has it after the edit.
QByteArray currentLocation(quint64 persistentId)
{
    using Buffer = std::array<char, 1024>;
    std::array<Buffer, 6> buffers = {};
    get_trackWithPresistentID(EyeTunes::sharedInstance(), persistentId, buffers[0].data(), buffers[1].data(),
                              buffers[2].data(), buffers[3].data(), nullptr, buffers[4].data(),
                              buffers[5].data());
    return QByteArray(buffers[5].data());
}

SongEditing::Outcome applyToTrack(QMusicInfo& song, const SongEdit& edit)
{
    iTunesTrackRecord& track = *song.track;
    track.name = lastingCopy(edit.title.toUtf8());
    track.album = lastingCopy(edit.album.toUtf8());
    track.artist = lastingCopy(edit.artist.toUtf8());
    track.genre = lastingCopy(edit.genre.toLocal8Bit()); // Oddity 42: unlike the others.
    track.year = quint64(qint64(edit.year));
    track.trackNumber = quint64(qint64(edit.trackNumber)); // Oddity 41: never sent.
    if (!edit.newCoverPath.isEmpty())
        song.coverPath = edit.newCoverPath;
    const quint64 id = SongFields::persistentId(&song);
    const int failed =
        set_trackWithPresistentID(EyeTunes::sharedInstance(), id, track.name, track.album, track.artist,
                                  track.genre, edit.year, song.coverPath.toLocal8Bit().constData());
    // A library that does not know the track has no better location to offer, nor has an answer that ends
    // where the buffer did.
    const QByteArray location = currentLocation(id);
    if (!location.isEmpty() && !QByteArray(track.location).startsWith(location))
        track.location = lastingCopy(location);
    return {failed == 0, failed == 0};
}
} // namespace

// Oddity 7: this order and spelling.
QStringList SongEditing::genres()
{
    return {QString(),
            QStringLiteral("Blue"),
            QStringLiteral("Alternavite & Punk"),
            QStringLiteral("Books & Spoken"),
            QStringLiteral("Children's Music"),
            QStringLiteral("Classical"),
            QStringLiteral("Pop"),
            QStringLiteral("Rock"),
            QStringLiteral("Other")};
}

bool SongEditing::takesCoverOut(const QMusicInfo* song)
{
    return QIOrvoUtil::m_cleanMode && QIOrvoUtil::isImage(SongFields::coverPath(song));
}

SongEditing::Outcome SongEditing::apply(QMusicInfo& song, const SongEdit& edit)
{
    if (QIOrvoUtil::m_cleanMode)
        return song.localInfo ? applyLocal(*song.localInfo, edit) : Outcome();
    return song.track ? applyToTrack(song, edit) : Outcome();
}

int SongEditing::writeTag(IAudioTag& tag, const SongEdit& edit)
{
    TagContent content;
    content.title = edit.title;
    content.artist = edit.artist;
    content.album = edit.album;
    content.genre = edit.genre;
    content.year = QString::number(edit.year);
    content.track = QString::number(edit.trackNumber);
    // Oddity 37: also without a chosen cover; saving then takes the picture out.
    content.picture = wantedPicture(tag, edit);
    return content.save(tag);
}
