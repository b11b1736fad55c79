#include "paintcoverimagethread.h"

#include "common/workers.h"
#include "qmusicinfo.h"
#include "songs/songfields.h"
#include "songs/trackcover.h"

PaintCoverImageThread::PaintCoverImageThread(QObject* parent) : QThread(parent) {}

PaintCoverImageThread::~PaintCoverImageThread()
{
    requestInterruption();
    wait();
}

void PaintCoverImageThread::setList(QList<QMusicInfo*>* list)
{
    m_tracks.clear();
    if (!list)
        return;
    m_tracks.reserve(size_t(list->size()));
    for (const QMusicInfo* song : qAsConst(*list))
        m_tracks.push_back({song->coverPath, SongFields::persistentId(song)});
}

void PaintCoverImageThread::run()
{
    Workers::finish("loading covers", [this] {
        for (const Track& track : m_tracks) {
            if (isInterruptionRequested())
                return;
            TrackCover::fetch(track.coverPath, track.persistentId);
        }
    });
    if (!isInterruptionRequested())
        emit emitPaintCoverhadfinished();
}
