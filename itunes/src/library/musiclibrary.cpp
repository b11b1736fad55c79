#include "library/musiclibrary.h"

#include "base/log.h"
#include "base/platform.h"
#include "library/location.h"
#include "library/mediatags.h"

#include <algorithm>
#include <exception>
#include <thread>

using itunes::LibraryFile;
using itunes::MusicLibrary;

namespace {
iTunesReading resultOf(const itunes::ReadingFailure& failure, const itunes::TrackStore* store,
                       const std::string& path)
{
    if (store)
        return store->count() > 0 ? ITUNES_READ : ITUNES_EMPTY;
    base::FileState file;
    if (failure.line > 0)
        return base::stateOf(path, file) && file.size == 0 ? ITUNES_EMPTY : ITUNES_BROKEN;
    return failure.failure.kind == base::Failure::Kind::Gone ? ITUNES_NO_LIBRARY : ITUNES_UNREADABLE;
}

/// The library file, behind all links; empty for none.
std::string realFile(const itunes::LibraryPlaces& places)
{
    const std::string file = places.file();
    const std::string real = file.empty() ? file : base::realPath(file);
    return real.empty() ? file : real;
}
} // namespace

MusicLibrary& MusicLibrary::instance()
{
    // Never destroyed, so that calls stay defined to the end of the process.
    static auto* library = new MusicLibrary;
    return *library;
}

void MusicLibrary::setOption(const std::string& path)
{
    const std::lock_guard<std::mutex> lock(m_optionMutex);
    m_option = path;
}

itunes::LibraryPlaces MusicLibrary::places()
{
    const std::lock_guard<std::mutex> lock(m_optionMutex);
    return LibraryPlaces(m_option);
}

/// The library file at the path; null for none. Another one than before writes first what is pending for the
/// former.
std::shared_ptr<LibraryFile> MusicLibrary::fileAt(const std::string& path)
{
    if (m_file && m_file->path() != path)
        m_file.reset();
    m_path = path;
    return lastFile();
}

std::shared_ptr<LibraryFile> MusicLibrary::lastFile()
{
    if (!m_file && !m_path.empty())
        m_file = std::make_shared<LibraryFile>(m_path);
    return m_file;
}

void MusicLibrary::prepare()
{
    unsigned uses = 0;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        uses = m_uses;
    }
    // A share that does not answer holds up this thread alone, and nobody waits for its end.
    const auto work = [this, places = places(), uses] {
        try {
            prepareFile(realFile(places), uses);
        } catch (const std::exception& fault) {
            base::logFailure("the music library", "what an earlier run left waits", fault.what());
        }
    };
    try {
        std::thread(work).detach();
    } catch (const std::exception&) {
        work();
    }
}

/// A library that was read meanwhile, or closed, has had it all.
void MusicLibrary::prepareFile(const std::string& path, unsigned uses)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const std::shared_ptr<LibraryFile> library = uses == m_uses ? fileAt(path) : nullptr;
    if (library)
        library->prepare();
}

void MusicLibrary::read(iTunesTrackRecord** records, int* count)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    ++m_uses;
    m_former = std::move(m_store);
    m_edits.forget();
    ReadingFailure failure;
    std::unique_ptr<TrackStore> store;
    const std::shared_ptr<LibraryFile> library = fileAt(realFile(places()));
    if (library) {
        store = library->read(failure);
        if (!store)
            base::logLine(library->path(), "the music library cannot be read: " + failure.failure.text);
    }
    m_problem = failure.failure.text;
    m_reading = {library ? resultOf(failure, store.get(), library->path()) : ITUNES_NO_LIBRARY, failure.line};
    m_store = store ? std::move(store) : std::make_unique<TrackStore>();
    *records = m_store->records();
    *count = m_store->count();
}

MusicLibrary::Reading MusicLibrary::lastReading()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_reading;
}

const char* MusicLibrary::problem()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_problem.c_str();
}

void MusicLibrary::close()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    ++m_uses;
    m_file.reset();
}

std::optional<std::string> MusicLibrary::locationOf(std::uint64_t id)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const TrackStore::Place* const place = m_store ? m_store->find(id) : nullptr;
    if (!place || !place->location)
        return std::nullopt;
    return place->location;
}

std::optional<MusicLibrary::Access> MusicLibrary::accessTo(std::uint64_t id, iTunesEditProblem& problem)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const TrackStore::Place* const place = m_store ? m_store->find(id) : nullptr;
    if (!place || !lastFile()) {
        base::logLine("the music library", "it holds no track under this identifier");
        problem = ITUNES_TRACK_GONE;
        return std::nullopt;
    }
    if (m_store->isAmbiguous(id)) {
        base::logLine("the music library", "several tracks have this identifier, none was changed");
        problem = ITUNES_TRACK_AMBIGUOUS;
        return std::nullopt;
    }
    return Access{m_file, m_store, place->location ? pathOf(place->location) : std::string(),
                  m_store->valuesOf(*place)};
}

itunes::EditResult MusicLibrary::edit(std::uint64_t id, const TrackValues& values,
                                      const std::string& coverPath)
{
    EditResult result;
    const std::optional<Access> track = accessTo(id, result.problem);
    if (!track)
        return result;
    if (track->mediaPath.empty()) {
        base::logLine("the music library", "the track has no file to edit");
        return {ITUNES_TRACK_WITHOUT_FILE};
    }
    std::optional<std::vector<char>> picture = pictureFile(coverPath);
    if (!picture) {
        base::logLine(coverPath, "is no picture file that can be read, the track was not changed");
        return {ITUNES_PICTURE_UNREADABLE};
    }
    if (!picture->empty() && !isPicture(*picture)) {
        base::logLine(coverPath, "is no picture, the track's artwork stays as it is");
        picture->clear();
    }
    const JournalRecord record{
        id, ChangeKind::Edit, differenceOf(track->lastSeen, values), markOf(*picture, coverPath), {}};
    KeptEdit kept{id, track->lastSeen, differenceOf(values, track->lastSeen), track->mediaPath, {}, {}, {}};
    result.problem = track->file->edit(record, [&] {
        base::stateOf(kept.mediaPath, kept.before);
        result.media = writeTags(kept.mediaPath, tagsOf(record.edit, std::move(*picture)), &kept.tags);
        base::stateOf(kept.mediaPath, kept.after);
        return result.media == SAVE_NO_PROBLEM;
    });
    if (result.problem != ITUNES_EDIT_DONE || (record.edit.isEmpty() && kept.after.hasContentOf(kept.before)))
        return result;
    noteEdit(*track, values, std::move(kept));
    result.isKept = true;
    return result;
}

void MusicLibrary::noteEdit(const Access& track, const TrackValues& values, KeptEdit edit)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    track.store->noteEdit(edit.id, values);
    if (track.store == m_store)
        m_edits.add(std::move(edit));
}

itunes::EditResult MusicLibrary::takeBackEdit(std::uint64_t id)
{
    std::optional<KeptEdit> kept;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        kept = m_edits.take(id);
    }
    if (!kept) {
        base::logLine("the music library", "the edit is not known any more, it stays");
        return {ITUNES_NOT_KEPT};
    }
    EditResult result;
    const std::optional<Access> track = accessTo(id, result.problem);
    base::FileState media;
    if (!track)
        return result;
    if (!base::stateOf(kept->mediaPath, media) || !media.hasContentOf(kept->after)) {
        base::logLine(kept->mediaPath, "an edit stays: another program changed the file since");
        return {ITUNES_CHANGED_SINCE};
    }
    const JournalRecord record{id, ChangeKind::Reversal, kept->edit, {}, MediaMark::of(media)};
    result.problem = track->file->edit(record, [&] {
        result.media = writeTags(kept->mediaPath, kept->tags);
        return result.media == SAVE_NO_PROBLEM;
    });
    if (result.problem != ITUNES_EDIT_DONE)
        return result;
    const std::lock_guard<std::mutex> lock(m_mutex);
    track->store->noteEdit(id, kept->values);
    if (base::stateOf(kept->mediaPath, media))
        m_edits.tookBack(*kept, media);
    return result;
}

std::vector<iTunesEditProblem> MusicLibrary::remove(const std::vector<std::uint64_t>& ids)
{
    std::vector<iTunesEditProblem> problems(ids.size(), ITUNES_EDIT_DONE);
    std::shared_ptr<LibraryFile> file;
    TrackSet leaving;
    for (std::size_t i = 0; i < ids.size(); ++i) {
        const std::optional<Access> track = accessTo(ids[i], problems[i]);
        if (track && !leaving.insert(ids[i]).second)
            problems[i] = ITUNES_TRACK_GONE; // with the one before it
        else if (track)
            file = track->file;
    }
    const iTunesEditProblem problem = leaving.empty() ? ITUNES_EDIT_DONE : file->remove(leaving);
    std::replace(problems.begin(), problems.end(), ITUNES_EDIT_DONE, problem);
    if (problem != ITUNES_EDIT_DONE)
        return problems;
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const std::uint64_t id : leaving)
        m_store->forget(id);
    return problems;
}

iTunesEditProblem MusicLibrary::bringBack(const TrackSet& ids)
{
    std::shared_ptr<LibraryFile> file;
    std::shared_ptr<TrackStore> store;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        file = lastFile();
        store = m_store;
    }
    const auto wasRead = [&store](std::uint64_t id) { return store->wasRead(id); };
    if (!file || !store || !std::all_of(ids.begin(), ids.end(), wasRead)) {
        base::logLine("the music library", "the deleted tracks are not known any more, none comes back");
        return ITUNES_NOT_KEPT;
    }
    if (const iTunesEditProblem problem = file->bringBack(ids))
        return problem;
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const std::uint64_t id : ids)
        store->remember(id);
    return ITUNES_EDIT_DONE;
}

std::size_t MusicLibrary::bytesKept()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_edits.bytes() + (m_file ? m_file->bytesKept() : 0);
}

bool MusicLibrary::writeArtwork(std::uint64_t id, const std::string& path)
{
    const std::optional<std::string> location = locationOf(id);
    const std::vector<char> picture = location ? readPicture(pathOf(*location)) : std::vector<char>();
    return !picture.empty() && m_artwork.write(picture, path);
}
