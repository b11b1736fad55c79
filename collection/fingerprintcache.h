#pragma once

#include "collection/filestate.h"

#include <QtGlobal>
#include <QVector>

#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <tuple>

/// Fingerprints of files that were made before, in one file of the user's cache folder. It says of each
/// record whether it is whole: what is not, or of another file's state, is not found. Several processes may
/// use it at once. Where it cannot be had nothing is found and nothing kept, and that is all. Any thread.
class FingerprintCache
{
public:
    using Fingerprint = QVector<quint32>;

    /// For some 65,000 songs.
    static constexpr std::int64_t usualBytes = 256 * 1024 * 1024;
    /// Empty for a user without a home.
    static std::string usersFolder();

    /// The folder is made where it is not there. Once the file would be larger than so many bytes, what was
    /// not asked for since the object is there goes; where all was, nothing more is kept.
    explicit FingerprintCache(const std::string& folder, std::int64_t mostBytes = usualBytes);
    FingerprintCache(const FingerprintCache&) = delete;
    FingerprintCache& operator=(const FingerprintCache&) = delete;

    /// The fingerprint of the file at the path, as long as it is in that state (FileState::of).
    std::optional<Fingerprint> find(const std::string& path, const FileState& state);
    /// False where it is not kept.
    bool keep(const std::string& path, const FileState& state, const Fingerprint& fingerprint);

private:
    struct Close
    {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    using File = std::unique_ptr<std::FILE, Close>;
    /// Device, inode, size, time and, where that does not tell enough, path.
    using Key = std::tuple<std::uint64_t, std::uint64_t, std::int64_t, std::int64_t, std::uint64_t>;
    struct Place
    {
        std::int64_t begin;
        std::uint64_t count; ///< of values
        bool wasAskedFor;
    };
    struct Head;

    static Key keyOf(const std::string& path, const FileState& state);
    static Head headOf(const Key& key, const Fingerprint& fingerprint);
    File lock() const;
    bool open();
    void catchUp();
    bool isReplaced() const;
    std::optional<Fingerprint> read(const Place& place) const;
    bool makeRoom(std::int64_t bytes);
    bool copyTo(std::FILE* file) const;

    std::mutex m_mutex; ///< held for all below
    const std::string m_folder;
    const std::int64_t m_mostBytes;
    File m_file;
    std::int64_t m_end = 0; ///< behind the last record that is known
    std::map<Key, Place> m_places;
    bool m_isClosed = false; ///< for further ones, since there is no room or somebody else has it
};
