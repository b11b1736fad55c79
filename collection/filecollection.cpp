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
} // namespace

bool FileCollection::isMusicFile(const QString& path)
{
    return Formats::isMusicEnding(path.right(3));
}

QStringList FileCollection::musicFilesUnder(const QString& path, const std::function<bool(int found)>& step)
{
    QStringList files;
    const QFileInfo start(path);
    if (!start.isDir()) {
        if (isMusicFile(path))
            files.append(path);
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
            } else if (isMusicFile(entry.filePath())) {
                files.append(entry.filePath());
            }
        }
        if (step && !step(files.size()))
            break;
    }
    return files;
}
