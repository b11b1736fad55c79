#include "collection/fingerprintcache.h"

#include "base/fileowner.h"
#include "base/hash.h"
#include "base/newfile.h"
#include "base/platform.h"
#include "base/userfolder.h"

#include <chrono>
#include <string_view>

using base::NewFile;

/// What a record begins with; the values follow. As this machine writes its numbers: on one that does it
/// otherwise the mark is another one.
struct FingerprintCache::Head
{
    std::uint64_t mark = 0x3150746E69725073u;
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t size = 0;
    std::int64_t modified = 0;
    std::uint64_t path = 0;
    std::uint64_t count = 0;
    std::uint64_t valuesHash = 0;
    std::uint64_t hash = 0; ///< of all before

    std::string_view bytes() const
    {
        return {reinterpret_cast<const char*>(this), sizeof *this - sizeof hash};
    }
    bool isWhole() const { return mark == Head().mark && hash == base::hashOf(bytes()); }
    std::int64_t recordBytes() const { return std::int64_t(sizeof *this + count * sizeof(quint32)); }
    Key key() const { return {device, inode, size, modified, path}; }
};

namespace {
/// The number changes with what a fingerprint is made of.
constexpr std::string_view firstFingerprintLine = "melodrift fingerprints 1\n";
constexpr std::uint64_t mostValues = 4096;
constexpr std::chrono::milliseconds lockPatience(1000);

std::string_view bytesOfValues(const FingerprintCache::Fingerprint& values)
{
    return {reinterpret_cast<const char*>(values.constData()), std::size_t(values.size()) * sizeof(quint32)};
}

bool writeAll(std::FILE* file, std::int64_t place, std::string_view bytes)
{
    return base::writeAt(file, place, bytes.data(), bytes.size()) == bytes.size();
}

bool isOurs(std::FILE* file)
{
    std::string begin(firstFingerprintLine.size(), '\0');
    return base::isUsersAlone(file) && base::readAt(file, 0, begin.data(), begin.size()) == begin.size() &&
           begin == firstFingerprintLine;
}

std::string cacheFile(const std::string& folder)
{
    return folder + "/fingerprints";
}
} // namespace

std::string FingerprintCache::usersFolder()
{
    const std::string cache = base::userFolder("XDG_CACHE_HOME", "/.cache");
    return cache.empty() ? cache : cache + "/melodrift";
}

FingerprintCache::FingerprintCache(const std::string& folder, std::int64_t mostBytes)
    : m_folder(folder), m_mostBytes(mostBytes)
{
    base::Failure borne;
    if (folder.empty() || !base::makeUserFolder(folder, borne))
        return;
    const File mine = lock();
    if (mine)
        open();
}

/// Some disks tell times by whole seconds and number their files anew each time: there the path counts, too.
FingerprintCache::Key FingerprintCache::keyOf(const std::string& path, const FileState& state)
{
    constexpr std::int64_t aSecond = 1000000000;
    const base::FileState& file = state.file;
    const bool isWeak = file.inode == 0 || file.modified % aSecond == 0;
    return {file.device, file.inode, file.size, file.modified, isWeak ? base::hashOf(path) : 0};
}

FingerprintCache::Head FingerprintCache::headOf(const Key& key, const Fingerprint& fingerprint)
{
    Head head;
    std::tie(head.device, head.inode, head.size, head.modified, head.path) = key;
    head.count = std::uint64_t(fingerprint.size());
    head.valuesHash = base::hashOf(bytesOfValues(fingerprint));
    head.hash = base::hashOf(head.bytes());
    return head;
}

/// Nothing is written without it. A file of its own, since another one may take the place of the records'.
FingerprintCache::File FingerprintCache::lock() const
{
    base::Failure borne;
    return File(base::lockUserFile(m_folder + "/lock", lockPatience, borne));
}

/// What is there and no cache of this version makes way for one.
bool FingerprintCache::open()
{
    base::Failure borne;
    m_places.clear();
    m_file.reset(base::openUserFile(cacheFile(m_folder), firstFingerprintLine, borne));
    if (m_file && !isOurs(m_file.get())) {
        base::FileState state;
        m_file.reset();
        if (base::stateOf(cacheFile(m_folder), state) && state.regular) {
            base::removeFile(cacheFile(m_folder));
            m_file.reset(base::openUserFile(cacheFile(m_folder), firstFingerprintLine, borne));
        }
    }
    m_end = std::int64_t(firstFingerprintLine.size());
    if (m_file)
        catchUp();
    return bool(m_file);
}

/// Takes in what was written since, by other processes as well. What a kill cut short is taken away.
void FingerprintCache::catchUp()
{
    base::FileState state;
    if (!base::stateOf(m_file.get(), state))
        return;
    for (;;) {
        Head head;
        const bool isThere = base::readAt(m_file.get(), m_end, &head, sizeof head) == sizeof head;
        if (!isThere || !head.isWhole() || head.count > mostValues || m_end + head.recordBytes() > state.size)
            break;
        m_places[head.key()] = {m_end + std::int64_t(sizeof head), head.count, false};
        m_end += head.recordBytes();
    }
    if (m_end != state.size)
        base::truncateTo(m_file.get(), m_end);
}

bool FingerprintCache::isReplaced() const
{
    base::FileState own;
    base::FileState there;
    return !base::stateOf(m_file.get(), own) || !base::stateOf(cacheFile(m_folder), there) ||
           !there.isOf(own);
}

std::optional<FingerprintCache::Fingerprint> FingerprintCache::read(const Place& place) const
{
    Fingerprint values(int(place.count));
    const std::size_t bytes = place.count * sizeof(quint32);
    Head head;
    const bool isRead = base::readAt(m_file.get(), place.begin - std::int64_t(sizeof head), &head,
                                     sizeof head) == sizeof head &&
                        base::readAt(m_file.get(), place.begin, values.data(), bytes) == bytes;
    if (!isRead || head.valuesHash != base::hashOf(bytesOfValues(values)))
        return std::nullopt;
    return values;
}

std::optional<FingerprintCache::Fingerprint> FingerprintCache::find(const std::string& path,
                                                                    const FileState& state)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    const auto place = state.exists() ? m_places.find(keyOf(path, state)) : m_places.end();
    if (!m_file || place == m_places.end())
        return std::nullopt;
    std::optional<Fingerprint> found = read(place->second);
    if (found)
        place->second.wasAskedFor = true;
    else
        m_places.erase(place);
    return found;
}

bool FingerprintCache::keep(const std::string& path, const FileState& state, const Fingerprint& fingerprint)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (!m_file || m_isClosed || !state.exists() || std::uint64_t(fingerprint.size()) > mostValues)
        return false;
    const File mine = lock();
    if (!mine || (isReplaced() && !open())) {
        m_isClosed = true; // who has it now would be waited for with each further one
        return false;
    }
    catchUp();
    const Key key = keyOf(path, state);
    const Head head = headOf(key, fingerprint);
    if (m_end + head.recordBytes() > m_mostBytes && !makeRoom(head.recordBytes()))
        return false;
    std::string record(reinterpret_cast<const char*>(&head), sizeof head);
    record += bytesOfValues(fingerprint);
    if (!writeAll(m_file.get(), m_end, record)) {
        base::truncateTo(m_file.get(), m_end);
        m_isClosed = true; // or the disk is
        return false;
    }
    m_places[key] = {m_end + std::int64_t(sizeof head), head.count, true};
    m_end += std::int64_t(record.size());
    return true;
}

/// Lets go of what nobody asked for, where that is a quarter at least.
bool FingerprintCache::makeRoom(std::int64_t bytes)
{
    std::int64_t left = std::int64_t(firstFingerprintLine.size());
    for (const auto& [key, place] : m_places)
        if (place.wasAskedFor)
            left += std::int64_t(sizeof(Head) + place.count * sizeof(quint32));
    m_isClosed = left > m_mostBytes / 4 * 3 || left + bytes > m_mostBytes;
    base::Failure borne;
    const std::unique_ptr<NewFile> made = m_isClosed ? nullptr : NewFile::forName(cacheFile(m_folder), borne);
    if (!made || !copyTo(made->file()) ||
        made->takeName(cacheFile(m_folder), borne) != NewFile::Taking::Done) {
        m_isClosed = true;
        return false;
    }
    if (!open())
        return false;
    for (auto& [key, place] : m_places)
        place.wasAskedFor = true;
    return true;
}

bool FingerprintCache::copyTo(std::FILE* file) const
{
    std::int64_t end = std::int64_t(firstFingerprintLine.size());
    bool isDone = writeAll(file, 0, firstFingerprintLine);
    for (const auto& [key, place] : m_places) {
        if (!isDone || !place.wasAskedFor)
            continue;
        std::string record(sizeof(Head) + place.count * sizeof(quint32), '\0');
        isDone = base::readAt(m_file.get(), place.begin - std::int64_t(sizeof(Head)), record.data(),
                              record.size()) == record.size() &&
                 writeAll(file, end, record);
        end += std::int64_t(record.size());
    }
    return isDone;
}
