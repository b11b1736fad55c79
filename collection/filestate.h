#pragma once

#include "base/platform.h"

#include <QHash>
#include <QString>
#include <QtGlobal>

#include <string>

/// A regular file as it is at one moment, without its content: while the state stays equal, so does what was
/// read from the file. Where the system has file numbers, all hard links to one file have one state, and a
/// further one changes nothing about it, unlike about the state that base compares; elsewhere every path has
/// its own. Any thread.
struct FileState
{
    QString path;         ///< empty where files have numbers
    base::FileState file; ///< without device and inode where files have no numbers
    bool there = false;

    /// False for a path without a regular file behind it: nothing there, a directory, a pipe.
    bool exists() const { return there; }

    static FileState of(const QString& path);
    /// Of what lies at the path itself, a link included.
    static FileState ofEntry(const QString& path);
    /// The same for paths of any bytes, as the system has them.
    static FileState of(const std::string& path);
    static FileState ofEntry(const std::string& path);
};

inline bool operator==(const FileState& a, const FileState& b)
{
    return a.there == b.there && a.file.hasContentOf(b.file) && a.path == b.path;
}

inline bool operator!=(const FileState& a, const FileState& b)
{
    return !(a == b);
}

/// Removes what lies at the path itself, never a folder, if it is in that state; the reason why not, or
/// empty.
QString removeIfUnchanged(const QString& path, const FileState& state);
QString removeIfUnchanged(const std::string& path, const FileState& state);

/// Why a file is not as it was left in a state, which may have been long ago; empty where it is.
QString whyNotAsLeft(const FileState& left, const FileState& now);

inline uint qHash(const FileState& state, uint seed = 0)
{
    const uint number = ::qHash(quint64(state.file.inode), seed);
    return number ^ ::qHash(qint64(state.file.modified), number) ^ ::qHash(state.path, seed);
}
