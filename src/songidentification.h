#pragma once

#include "songs/identifywords.h"

#include <QObject>
#include <QPointer>

#include <memory>

class IdentifyThread;
class QImageButton;
class QLabel;
class SkinMovie;
struct QMusicInfo;

/// The identification of the song that a panel shows: its worker, and what shows that it is at work. Results
/// go from the worker to the panel. GUI thread only.
class SongIdentification : public QObject
{
    Q_OBJECT

public:
    struct Widgets
    {
        QLabel& movie;
        QImageButton& apply; ///< no apply before the end
    };

    /// The panel, which must outlive it, has the slots SlotReceiveIdentifyInfo, SlotReceiveIdentifyCover and
    /// SlotOnFailIdentifyTips, and owns the workers.
    SongIdentification(const Widgets& widgets, QObject* panel);
    /// Has all workers end.
    ~SongIdentification() override;

    void start(const QMusicInfo* song);
    /// From the start until the results are here, or nobody waits for them.
    bool isRunning() const { return m_bRunning; }
    /// Nothing shows that it runs any more, whether it did or not.
    void end();
    /// The same, and has the worker end. It may have ended already, its results being on their way.
    void cancel();
    /// Whether a worker tells of another song than the one shown, or of a run that a later one has replaced.
    bool isStale(const QObject* worker, const QMusicInfo* shown) const;
    /// The latest one; they end and go by themselves.
    const IdentifyThread* worker() const { return m_pWorker; }
    /// What the foot of the window says of a run; null for one that never was.
    FootText words(const IdentifyThread* worker);

signals:
    /// True at its start, false at its end.
    void running(bool running);

private:
    IdentifyThread* makeWorker(const QMusicInfo* song);

    Widgets m_widgets;
    QObject* m_panel;
    std::unique_ptr<SkinMovie> m_pMovie;
    QPointer<IdentifyThread> m_pWorker;
    const QMusicInfo* m_pSong = nullptr; ///< what it works on; only compared
    bool m_bRunning = false;
    IdentifyWords m_words;
};
