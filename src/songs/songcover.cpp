#include "songs/songcover.h"

#include "covers/coverloader.h"
#include "qiorvoutil.h"
#include "songs/songfields.h"

QString SongCover::shownPath(const QMusicInfo* song)
{
    const QString path = SongFields::coverPath(song);
    return QIOrvoUtil::isImage(path) ? path : CoverLoader::genericCoverPath();
}
