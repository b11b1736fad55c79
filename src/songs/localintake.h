#pragma once

#include "collection/filecollection.h"
#include "songs/localsongreader.h"

#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QTimer>
#include <QVector>

/// Takes music files in on the GUI thread while the window goes on repainting: clicks and keys are lost but
/// for Escape, which ends it; everything else is handled several times a second, so whatever could disturb an
/// intake asks isRunning() first.
class LocalIntake : public QObject
{
    Q_OBJECT

public:
    explicit LocalIntake(QObject* parent = nullptr);
    ~LocalIntake() override;

    /// Comes before what the user asks for anew: an end that he asked for before counts no more.
    void begin() { m_bEnded = false; }
    /// Whether the user ended it since, after the file in hand; what was added stays added.
    bool wasEnded() const { return m_bEnded; }

    /// The music file that the path names, or those lying under it; `foundBefore` counts into the progress.
    /// Windows Media files are for those who name them.
    FileCollection::Found collect(const QString& path, int foundBefore);
    /// Reads the files and appends one song and one tag object (null where none could be made) for each. The
    /// caller owns the songs; the tag objects stay the audio core's. Covers go on arriving in the songs from
    /// the event loop: reader().forgetCovers() comes before the end of a song.
    void add(const QStringList& files, QList<QMusicInfo*>& songs, QList<IAudioTag*>& tags);

    /// A file that the last add() could not read, and why; its song has no texts.
    struct Unreadable
    {
        QString path;
        QString reason;
    };
    const QVector<Unreadable>& unreadable() const { return m_unreadable; }

    bool isRunning() const { return m_bRunning; }
    /// Ends what is running after the file in hand; what was added stays added. A stopped intake takes in
    /// nothing more.
    void stop() { m_bStopped = true; }
    bool isStopped() const { return m_bStopped; }
    /// Whether there is more to do for it: nobody stopped or ended it.
    bool goesOn() const { return !m_bStopped && !m_bEnded; }

    LocalSongReader& reader() { return m_reader; }

signals:
    /// Several times a second once the work takes longer than a blink.
    void progress(int done, int total);

private:
    class Running;

    void keepAlive(int done, int total);
    void handCoversOver();

    LocalSongReader m_reader;
    IAudioTag* m_pCurrentTag = nullptr;
    IAudioDecoder* m_pCurrentDecoder = nullptr;
    QList<IAudioDecoder*> m_decoderList;
    QVector<Unreadable> m_unreadable;
    QTimer m_coverTimer; ///< runs while covers are being decoded
    QElapsedTimer m_sinceStart;
    QElapsedTimer m_sinceRepaint;
    bool m_bRunning = false;
    bool m_bStopped = false;
    bool m_bEnded = false;
};
