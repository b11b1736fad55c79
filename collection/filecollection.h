#pragma once

#include <QStringList>

#include <functional>

/// Finds the music files under what the user dropped.
namespace FileCollection {
/// Oddity 19: whether a path counts as music, by its last three characters; ".flac" passes as "lac".
bool isMusicFile(const QString& path);

/// A file's path itself when it counts as music, whether it exists or not; of a folder the music files in it
/// and below, level by level, each folder's entries sorted by name. Hidden entries are taken, entries that
/// are not both readable and writable are left out, and a folder that a link leads back to is walked once.
/// `step` is called between folders with the number of files found so far; false from it ends the walk.
QStringList musicFilesUnder(const QString& path, const std::function<bool(int found)>& step = nullptr);

struct Found
{
    QStringList music;
    QStringList windowsMedia; ///< in the same order
};
/// The same, and the Windows Media files: whether they are music is for the caller to say.
Found filesUnder(const QString& path, const std::function<bool(int found)>& step = nullptr);
} // namespace FileCollection
