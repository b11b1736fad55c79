#include "qmusicinfo.h"

#include "covers/coverloader.h"

QMusicInfo::QMusicInfo() : coverPath(CoverLoader::genericCoverPath()) {}
