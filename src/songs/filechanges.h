#pragma once

#include "collection/filestate.h"
#include "songs/changehistory.h"
#include "songs/tagcontent.h"

#include <QString>
#include <QVector>

#include <memory>

struct QMusicInfo;

/// Changes of songs' files, to be taken back.
namespace FileChanges {
/// A song's file as it is before an edit.
struct Before
{
    QString path;
    FileState state;
    TagContent content;

    static Before of(const QString& path);
};

/// After the save of an edit; null where the file is as it was. Texts and picture go back into the file as a
/// save puts them there.
std::unique_ptr<Change> edit(const Before& before, QMusicInfo* song);
/// After a deletion; null where nothing of it lies in the trash. Files come back from there, if nothing
/// stands at their paths.
std::unique_ptr<Change> deletion(const RemovedFiles& files, const QVector<RemovedSong>& songs);
} // namespace FileChanges
