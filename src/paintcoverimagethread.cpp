#include "paintcoverimagethread.h"

#include "common/workers.h"
#include "itunes/eyetunes.h"
#include "itunes/tunesedit.h"
#include "qmusicinfo.h"
#include "songs/songfields.h"

#include <QFile>

#include <algorithm>
#include <array>

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
        m_tracks.push_back({song->coverPath.toUtf8(), SongFields::persistentId(song)});
}

void PaintCoverImageThread::run()
{
    Workers::finish("loading covers", [this] {
        for (const Track& track : m_tracks) {
            if (isInterruptionRequested())
                return;
            fetchCover(track);
        }
    });
    if (!isInterruptionRequested())
        emit emitPaintCoverhadfinished();
}

void PaintCoverImageThread::fetchCover(const Track& track)
{
    using Buffer = std::array<char, 256>;
    Buffer cover = {};
    std::array<Buffer, 5> outputs = {};
    if (track.coverPath.size() >= int(cover.size())) {
        qWarning("the cover path %s is too long", track.coverPath.constData());
        return;
    }
    std::copy(track.coverPath.begin(), track.coverPath.end(), cover.begin());
    const int failed = get_trackWithPresistentID(EyeTunes::sharedInstance(), track.persistentId,
                                                 outputs[0].data(), outputs[1].data(), outputs[2].data(),
                                                 outputs[3].data(), nullptr, cover.data(), outputs[4].data());
    // A cover that an earlier scan brought is not this track's any more.
    if (failed)
        QFile::remove(QString::fromUtf8(track.coverPath));
}
