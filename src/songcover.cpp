#include "songcover.h"

#include "coverloader.h"
#include "qiorvoutil.h"
#include "songfields.h"

QString SongCover::shownPath(const QMusicInfo* song)
{
    const QString path = SongFields::coverPath(song);
    return QIOrvoUtil::isImage(path) ? path : CoverLoader::genericCoverPath();
}
