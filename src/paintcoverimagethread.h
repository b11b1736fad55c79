#pragma once

#include <QList>
#include <QString>
#include <QThread>

#include <vector>

struct QMusicInfo;

/// Fetches the artwork of scanned iTunes tracks into their cover files, in the list's order, on a thread of
/// its own. Songs and lists may change while it runs: what it needs is noted by setList().
class PaintCoverImageThread : public QThread
{
    Q_OBJECT

public:
    explicit PaintCoverImageThread(QObject* parent = nullptr);
    /// Ends a run after the cover in hand.
    ~PaintCoverImageThread() override;

    /// The scanned songs of the next run. Not while the thread runs.
    void setList(QList<QMusicInfo*>* list);

signals:
    /// When all songs were handled, or the others cannot be; not when the run was interrupted.
    void emitPaintCoverhadfinished();
    /// Oddity 18: declared, never emitted.
    void emitRefreshImage(int row);

protected:
    void run() override;

private:
    struct Track
    {
        QString coverPath;
        quint64 persistentId;
    };

    std::vector<Track> m_tracks;
};
