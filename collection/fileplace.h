#pragma once

#include <QByteArray>
#include <QPair>
#include <QtGlobal>

#include <string>

/// The folder entry that a path names, however the path is spelt: links are followed up to the folder, the
/// last step is not. Paths are bytes as the system has them. Any thread.
struct FilePlace
{
    using FileId = QPair<quint64, quint64>;  ///< device and number on it
    using Place = QPair<FileId, QByteArray>; ///< folder and name in it

    QByteArray entry; ///< absolute, and in letters of one case where either may be the same file

    bool known = false; ///< whether the disk tells what follows
    Place place;
    Place foldedPlace;   ///< in letters of one case
    bool isFile = false; ///< and no link
    quint64 names = 0;   ///< of the file, this one included
    FileId file;

    static FilePlace of(const std::string& path);

    /// The entry as it is spelt.
    const QByteArray& path() const { return m_path; }
    /// What the link at the entry leads to; empty if there is no link.
    std::string target() const;

private:
    QByteArray m_path;
};
