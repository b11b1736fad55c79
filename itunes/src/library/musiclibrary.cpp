#include "library/musiclibrary.h"

#include "base/log.h"
#include "base/platform.h"
#include "library/libraryplace.h"
#include "library/location.h"
#include "library/mediatags.h"

using itunes::LibraryFile;
using itunes::MusicLibrary;

MusicLibrary& MusicLibrary::instance()
{
    // Never destroyed, so that calls stay defined to the end of the process.
    static auto* library = new MusicLibrary;
    return *library;
}

void MusicLibrary::setOption(const std::string& path)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_option = path;
}

/// The library file as things are now; null when there is none. Another one than before writes first what is
/// pending for the former.
std::shared_ptr<LibraryFile> MusicLibrary::currentFile()
{
    const std::string place = libraryPlace(m_option);
    const std::string real = place.empty() ? place : base::realPath(place);
    const std::string& path = real.empty() ? place : real;
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
    const std::lock_guard<std::mutex> lock(m_mutex);
    const std::shared_ptr<LibraryFile> library = currentFile();
    if (library)
        library->prepare();
}

void MusicLibrary::read(iTunesTrackRecord** records, int* count)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_former = std::move(m_store);
    m_problem.clear();
    std::unique_ptr<TrackStore> store;
    if (const std::shared_ptr<LibraryFile> library = currentFile()) {
        store = library->read(m_problem);
        if (!store)
            base::logLine(library->path(), "the music library cannot be read: " + m_problem);
    }
    m_store = store ? std::move(store) : std::make_unique<TrackStore>();
    *records = m_store->records();
    *count = m_store->count();
}

const char* MusicLibrary::problem()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_problem.c_str();
}

void MusicLibrary::close()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
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

std::optional<MusicLibrary::Access> MusicLibrary::accessTo(std::uint64_t id)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const TrackStore::Place* const place = m_store ? m_store->find(id) : nullptr;
    if (!place || !lastFile()) {
        base::logLine("the music library", "it holds no track under this identifier");
        return std::nullopt;
    }
    if (m_store->isAmbiguous(id)) {
        base::logLine("the music library", "several tracks have this identifier, none was changed");
        return std::nullopt;
    }
    return Access{m_file, m_store, place->location ? pathOf(place->location) : std::string(),
                  m_store->valuesOf(*place)};
}

bool MusicLibrary::edit(std::uint64_t id, const TrackValues& values, const std::string& coverPath)
{
    const std::optional<Access> track = accessTo(id);
    if (!track)
        return false;
    if (track->mediaPath.empty()) {
        base::logLine("the music library", "the track has no file to edit");
        return false;
    }
    std::optional<std::vector<char>> picture = pictureFile(coverPath);
    if (!picture) {
        base::logLine(coverPath, "is no picture file that can be read, the track was not changed");
        return false;
    }
    if (!picture->empty() && !isPicture(*picture)) {
        base::logLine(coverPath, "is no picture, the track's artwork stays as it is");
        picture->clear();
    }
    const JournalRecord record{id, false, differenceOf(track->lastSeen, values), markOf(*picture, coverPath)};
    if (!track->file->edit(record, [&] { return writeTags(track->mediaPath, record.edit, *picture); }))
        return false;
    const std::lock_guard<std::mutex> lock(m_mutex);
    track->store->noteEdit(id, values);
    return true;
}

bool MusicLibrary::remove(std::uint64_t id)
{
    const std::optional<Access> track = accessTo(id);
    if (!track || !track->file->remove(id))
        return false;
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_store->forget(id);
    return true;
}

bool MusicLibrary::writeArtwork(std::uint64_t id, const std::string& path)
{
    const std::optional<std::string> location = locationOf(id);
    const std::vector<char> picture = location ? readPicture(pathOf(*location)) : std::vector<char>();
    return !picture.empty() && m_artwork.write(picture, path);
}
