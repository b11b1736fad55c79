#include "collection/filecollection.h"

#include "collection/formats.h"

#include <QDir>
#include <QQueue>
#include <QSet>

namespace {
QFileInfoList sortedEntries(const QString& folder)
{
    // Oddity 21: what the user cannot write is left out.
    return QDir(folder).entryInfoList(QDir::Dirs | QDir::Files | QDir::Readable | QDir::Writable |
                                          QDir::Hidden | QDir::NoDotAndDotDot,
                                      QDir::Name);
}

void take(const QString& path, FileCollection::Found& files)
{
    if (FileCollection::isMusicFile(path))
        files.music.append(path);
    else if (Formats::isWindowsMediaEnding(path.right(3)))
        files.windowsMedia.append(path);
}
} // namespace

bool FileCollection::isMusicFile(const QString& path)
{
    return Formats::isMusicEnding(path.right(3));
}

QStringList FileCollection::musicFilesUnder(const QString& path, const std::function<bool(int found)>& step)
{
    return filesUnder(path, step).music;
}

FileCollection::Found FileCollection::filesUnder(const QString& path,
                                                 const std::function<bool(int found)>& step)
{
    Found files;
    const QFileInfo start(path);
    if (!start.isDir()) {
        take(path, files);
        return files;
    }
    QQueue<QString> folders;
    QSet<QString> walked{start.canonicalFilePath()};
    folders.enqueue(path);
    while (!folders.isEmpty()) {
        for (const QFileInfo& entry : sortedEntries(folders.dequeue())) {
            if (entry.isDir()) {
                const int before = walked.size();
                walked.insert(entry.canonicalFilePath());
                if (walked.size() > before)
                    folders.enqueue(entry.filePath());
            } else {
                take(entry.filePath(), files);
            }
        }
        if (step && !step(files.music.size()))
            break;
    }
    return files;
}
