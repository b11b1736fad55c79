#pragma once

#include <QHash>
#include <QString>
#include <QtGlobal>

/// A regular file as it is at one moment, without its content: while the state stays equal, so does what was
/// read from the file. Where the system has file numbers, all hard links to one file have one state;
/// elsewhere every path has its own. Any thread.
struct FileState
{
    QString path;       ///< empty where files have numbers
    quint64 device = 0; ///< 0 where files have none
    quint64 number = 0;
    qint64 modified = 0; ///< as fine as the system has it; only good for comparing
    qint64 size = -1;    ///< bytes

    /// False for a path without a regular file behind it: nothing there, a directory, a pipe.
    bool exists() const { return size >= 0; }

    static FileState of(const QString& path);
    /// Of what lies at the path itself, a link included.
    static FileState ofEntry(const QString& path);
};

inline bool operator==(const FileState& a, const FileState& b)
{
    return a.number == b.number && a.modified == b.modified && a.size == b.size && a.device == b.device &&
           a.path == b.path;
}

inline bool operator!=(const FileState& a, const FileState& b)
{
    return !(a == b);
}

/// Removes what lies at the path itself, never a folder, if it is in that state; the reason why not, or
/// empty.
QString removeIfUnchanged(const QString& path, const FileState& state);

inline uint qHash(const FileState& state, uint seed = 0)
{
    const uint number = ::qHash(state.number, seed);
    return number ^ ::qHash(state.modified, number) ^ ::qHash(state.path, seed);
}
