#include "qmusicinfo.h"

#include "coverloader.h"

QMusicInfo::QMusicInfo() : coverPath(CoverLoader::genericCoverPath()) {}
