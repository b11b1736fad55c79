#pragma once

#include "collection/keeprule.h"
#include "collection/songfile.h"
#include "itunes/librarysight.h"

#include <QSet>
#include <QString>

#include <cstdint>
#include <string>

/// The tracks of a music library's file, as songs without a window. Reading changes nothing: who wants
/// changes has a ChangeStep make them. One thread at a time.
class LibraryTracks
{
public:
    enum class Media {
        There,
        Missing, ///< the library names a file that is not there
        None     ///< no file on this machine
    };
    struct Track
    {
        SongFile song; ///< `bytes` are the file's, or, where it is missing, what the library says
        Media media = Media::None;
        bool isSong = true;               ///< and no film, podcast or booklet
        std::uint64_t bytesInLibrary = 0; ///< 0 for none
    };

    /// Path in bytes as the system has it.
    explicit LibraryTracks(const std::string& library) : m_asRead(FileState::of(library)), m_sight(library) {}

    /// The library's file as it was before it was read.
    const FileState& asRead() const { return m_asRead; }

    /// Why the library could not be read, with line and column where it is broken; empty when it was.
    const std::string& problem() const { return m_sight.problem(); }
    int count() const { return m_sight.count(); }
    /// In the library's order. Looks at the media file as it is now.
    Track at(int position);

    /// The track for a plan of cleaning. A file stays that is no music by its name: a library can name any.
    static SongCopy copyOf(const SongFile& track);

    /// Of how many tracks changes wait for the library file, which others left or are at.
    std::size_t waiting() const { return m_sight.waiting(); }
    /// What is wrong with these; empty when nothing is.
    const std::string& waitingProblem() const { return m_sight.waitingProblem(); }

private:
    QString kindOf(const iTunesTrackRecord& record);

    const FileState m_asRead;
    const iTunesLibrarySight m_sight;
    QSet<QString> m_kinds; ///< each text once
};
