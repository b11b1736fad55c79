#include "musiclibrary.h"

#include "libraryplace.h"
#include "libraryreading.h"
#include "log.h"

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

void MusicLibrary::read(iTunesTrackRecord** records, int* count)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_former = std::move(m_store);
    const std::string path = libraryPlace(m_option);
    std::string error;
    std::unique_ptr<TrackStore> store;
    if (!path.empty()) {
        store = readLibrary(path, TrackChanges(), error);
        if (!store)
            audiocore::logLine(path, "the music library cannot be read: " + error);
    }
    m_store = store ? std::move(store) : std::make_unique<TrackStore>();
    *records = m_store->records();
    *count = m_store->count();
}

std::optional<std::string> MusicLibrary::locationOf(std::uint64_t id)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const TrackStore::Place* const place = m_store ? m_store->find(id) : nullptr;
    if (!place || !place->location)
        return std::nullopt;
    return place->location;
}

void MusicLibrary::close() {}
