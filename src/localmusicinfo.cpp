#include "localmusicinfo.h"

#include "covers/coverloader.h"

LocalMusicInfo::LocalMusicInfo() : cover(std::make_unique<QPixmap>(CoverLoader::genericCover())) {}
