#include "songs/librarysight.h"

#include "itunes/librarysearch.h"

#include <QFileInfo>

std::function<LibrarySight()> LibrarySight::search()
{
    return [search = iTunesLibrarySearch()] {
        const iTunesLibraryFound found = search();
        LibrarySight sight;
        sight.file = QString::fromStdString(found.file);
        for (const std::string& folder : found.folders)
            sight.folders.append(QString::fromStdString(folder));
        const QFileInfo file(sight.file);
        sight.isThere = !sight.file.isEmpty() && file.isFile();
        if (sight.isThere) {
            sight.bytes = quint64(file.size());
            sight.changed = file.lastModified();
        }
        return sight;
    };
}
