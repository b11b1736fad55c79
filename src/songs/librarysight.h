#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <functional>

/// What there is to see of the music library before it is read.
struct LibrarySight
{
    QString file;         ///< its path; empty where none was found
    bool isThere = false; ///< one that the user named may not be
    quint64 bytes = 0;
    QDateTime changed;
    QStringList folders; ///< that were looked at; none where a file is named

    /// How to see the one that the next scan reads, as things are named now. This takes no time; what it
    /// returns does, on any thread, for as long as a disk or a network share does not answer.
    static std::function<LibrarySight()> search();
};
