#include "songs/songediting.h"

#include "audiocore/iaudiotag.h"
#include "audiocore/saveproblem.h"
#include "collection/counttext.h"
#include "covers/coverloader.h"
#include "itunes/editproblem.h"
#include "itunes/eyetunes.h"
#include "itunes/itunestrackrecord.h"
#include "itunes/tunesedit.h"
#include "qiorvoutil.h"
#include "qmusicinfo.h"
#include "songs/filechanges.h"
#include "songs/localsongreader.h"
#include "songs/songfields.h"
#include "songs/tagcontent.h"
#include "songs/trackchanges.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <deque>
#include <limits>
#include <memory>
#include <utility>

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

/// Which fields the user left as the song showed them.
QVector<qint32> untouched(const LocalMusicInfo& local, const SongEdit& edit)
{
    QVector<qint32> types{TAG_PICTURE}; // one that was chosen does not take the cover out
    const auto note = [&types](qint32 type, bool same) {
        if (same)
            types.append(type);
    };
    note(TAG_TITLE, edit.title == local.title);
    note(TAG_ARTIST, edit.artist == local.artist);
    note(TAG_ALBUM, edit.album == local.album);
    note(TAG_GENRE, !edit.genreChosen || edit.genre == local.genre);
    note(TAG_YEAR, edit.year == local.year);
    note(TAG_TRACK, edit.trackNumber == local.trackNumber);
    return types;
}

QVector<FootLines::SideEffect> sideEffects(const QVector<qint32>& untouched, const TagContent& before,
                                           const TagContent& after)
{
    using Effect = FootLines::SideEffect;
    QVector<Effect> effects;
    const int others = before.pictures - std::max(after.pictures, 1);
    for (const qint32 type : untouched) {
        if (type == TAG_PICTURE) {
            if (before.pictures > 0 && after.pictures == 0)
                effects.append({Effect::Cover, QString(), QString()});
            if (others > 0)
                effects.append({Effect::OtherPictures, CountText::number(quint64(others)), QString()});
        } else if (before.text(type) != after.text(type)) {
            effects.append({Effect::Field(Effect::Title + type), before.text(type), after.text(type)});
        }
    }
    return effects;
}

SongEditing::Outcome saveLocal(QMusicInfo& song, const SongEdit& edit, const QVector<qint32>& untouched)
{
    SongEditing::Outcome outcome;
    LocalMusicInfo& local = *song.localInfo;
    // By one of our own. The tag object that stays with the song is left alone: it reads again when it is
    // asked again.
    const std::unique_ptr<IAudioTag, ReleaseTag> tag{CreateTag()};
    if (!tag) {
        outcome.file = SAVE_OTHER_PROBLEM;
        return outcome;
    }
    // Also when it cannot be opened: it is the save that tells of the lost edit, every time.
    tag->Open(local.filePath.toStdU32String().c_str());
    const FileChanges::Before before = FileChanges::Before::of(local.filePath);
    SongEditing::writeTag(*tag, edit);
    outcome.file = SaveProblemOf(tag.get());
    if (outcome.failed())
        return outcome;
    local.file = FileState::ofEntry(local.filePath);
    outcome.alsoChanged = sideEffects(untouched, before.content, TagContent::of(*tag));
    outcome.change = FileChanges::edit(before, &song);
    return outcome;
}

SongEditing::Outcome applyLocal(QMusicInfo& song, const SongEdit& edit)
{
    LocalMusicInfo& local = *song.localInfo;
    const QVector<qint32> left = untouched(local, edit);
    local.title = edit.title;
    local.artist = edit.artist;
    local.album = edit.album;
    local.genre = edit.genre;
    local.year = edit.year;
    local.trackNumber = edit.trackNumber;
    SongEditing::Outcome outcome = saveLocal(song, edit, left);
    if (edit.newCoverPath.isEmpty())
        return outcome;
    takeCover(local, edit.newCoverPath);
    outcome.coverChanged = outcome.coverUsed = true;
    return outcome;
}

bool takeFileBack(LocalMusicInfo& local)
{
    LocalSongReader reader;
    reader.begin();
    const LocalSongReader::Song read = reader.read(local.filePath);
    const std::unique_ptr<IAudioTag, ReleaseTag> tag(read.tag);
    ::operator delete(read.decoder);
    reader.finish();
    if (!read.reason.isEmpty())
        return false;
    const LocalMusicInfo& file = *read.info->localInfo;
    local.title = file.title;
    local.artist = file.artist;
    local.album = file.album;
    local.genre = file.genre;
    local.year = file.year;
    local.trackNumber = file.trackNumber;
    local.coverPath = file.coverPath;
    *local.cover = *file.cover; // whoever waits for the song's cover has its place
    local.file = file.file;
    return true;
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

TrackTruth truthOf(const QMusicInfo& song)
{
    const iTunesTrackRecord& track = *song.track;
    return {track.name, track.artist,      track.album,   track.genre,
            track.year, track.trackNumber, song.coverPath};
}

bool takeLibraryBack(QMusicInfo& song)
{
    const std::unique_ptr<TrackTruth> truth = std::move(song.truth);
    if (!truth)
        return false;
    iTunesTrackRecord& track = *song.track;
    track.name = truth->name;
    track.artist = truth->artist;
    track.album = truth->album;
    track.genre = truth->genre;
    track.year = truth->year;
    track.trackNumber = truth->trackNumber;
    song.coverPath = truth->coverPath;
    return true;
}

QVector<FootLines::SideEffect> sideEffects(const TrackTruth& before, const SongEdit& edit)
{
    using Effect = FootLines::SideEffect;
    const QString genre = QString::fromUtf8(before.genre);
    if (edit.genreChosen || genre == edit.genre)
        return {};
    return {Effect{Effect::Genre, genre, edit.genre}};
}

SongEditing::Outcome applyToTrack(QMusicInfo& song, const SongEdit& edit)
{
    iTunesTrackRecord& track = *song.track;
    const TrackTruth before = song.truth ? *song.truth : truthOf(song);
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
    if (failed) {
        song.truth = std::make_unique<TrackTruth>(before);
        return {false, false, SaveProblem(iTunesMediaProblem()), iTunesLastEditProblem(), {}};
    }
    song.truth.reset();
    return {true,
            true,
            SAVE_NO_PROBLEM,
            ITUNES_EDIT_DONE,
            sideEffects(before, edit),
            TrackChanges::edit(before, &song)};
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

qint64 SongEditing::largestCover(const QMusicInfo& song)
{
    const std::unique_ptr<IAudioTag, ReleaseTag> tag(CreateTag());
    if (!tag || tag->Open(SongFields::audioPath(&song).toStdU32String().c_str()) != 0)
        return std::numeric_limits<qint64>::max();
    return LargestPictureFor(tag.get());
}

SongEditing::Outcome SongEditing::apply(QMusicInfo& song, const SongEdit& edit)
{
    if (QIOrvoUtil::m_cleanMode)
        return song.localInfo ? applyLocal(song, edit) : Outcome();
    return song.track ? applyToTrack(song, edit) : Outcome();
}

QString SongEditing::lineOf(const QMusicInfo& song, const Outcome& outcome)
{
    const QString name = SongFields::shownName(&song);
    if (outcome.library != ITUNES_EDIT_DONE)
        return FootLines::notSaved(name, outcome.library, outcome.file);
    if (outcome.failed())
        return FootLines::notSaved(name, outcome.file);
    return outcome.file == SAVE_PICTURE_TOO_LARGE ? FootLines::savedWithoutCover(name)
                                                  : FootLines::saved(name, outcome.alsoChanged);
}

bool SongEditing::takeBack(QMusicInfo& song)
{
    if (QIOrvoUtil::m_cleanMode)
        return song.localInfo && takeFileBack(*song.localInfo);
    return song.track && takeLibraryBack(song);
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
