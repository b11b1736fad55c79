#include "localmusicinfo.h"

#include "coverloader.h"

LocalMusicInfo::LocalMusicInfo() : cover(std::make_unique<QPixmap>(CoverLoader::genericCover())) {}
