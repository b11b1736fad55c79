#include "songs/localintake.h"

#include "audiocore/iaudiodecoder.h"
#include "audiocore/iaudiotag.h"
#include "qmusicinfo.h"

#include <QCoreApplication>
#include <QKeyEvent>

#include <new>

namespace {
constexpr int repaintMilliseconds = 50;
constexpr int progressAfterMilliseconds = 400;
constexpr int coverMilliseconds = 30;
} // namespace

namespace {
/// Swallows what the user does with mouse and keyboard for one scope, and tells of Escape. Closing the window
/// is let through.
class InputBarrier : public QObject
{
public:
    explicit InputBarrier(bool& escaped) : m_escaped(escaped)
    {
        QCoreApplication::instance()->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        switch (event->type()) {
        case QEvent::KeyPress:
            m_escaped = m_escaped || static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape;
            return true;
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
        case QEvent::Wheel:
        case QEvent::KeyRelease:
        case QEvent::ShortcutOverride:
        case QEvent::Shortcut:
        case QEvent::ContextMenu:
        case QEvent::TouchBegin:
        case QEvent::TouchUpdate:
        case QEvent::TouchEnd:
            return true;
        default:
            return false;
        }
    }

private:
    bool& m_escaped;
};
} // namespace

/// Marks the intake as running for one scope.
class LocalIntake::Running
{
public:
    explicit Running(LocalIntake& intake) : m_intake(intake)
    {
        m_intake.m_bRunning = true;
        m_intake.m_sinceStart.start();
        m_intake.m_sinceRepaint.start();
    }
    ~Running() { m_intake.m_bRunning = false; }
    Q_DISABLE_COPY(Running)

private:
    LocalIntake& m_intake;
};

LocalIntake::LocalIntake(QObject* parent) : QObject(parent)
{
    connect(&m_coverTimer, &QTimer::timeout, this, &LocalIntake::handCoversOver);
}

LocalIntake::~LocalIntake()
{
    // The library's objects have no release of their own: the last of each kind gives its memory back, the
    // others stay with the library to the end of the run.
    ::operator delete(m_pCurrentTag);
    ::operator delete(m_pCurrentDecoder);
}

FileCollection::Found LocalIntake::collect(const QString& path, int foundBefore)
{
    const Running running(*this);
    return FileCollection::filesUnder(path, [this, foundBefore](int found) {
        keepAlive(0, foundBefore + found);
        return goesOn();
    });
}

void LocalIntake::add(const QStringList& files, QList<QMusicInfo*>& songs, QList<IAudioTag*>& tags)
{
    const Running running(*this);
    m_reader.begin();
    m_unreadable.clear();
    for (int done = 0; done < files.size() && goesOn(); ++done) {
        LocalSongReader::Song song = m_reader.read(files.at(done));
        songs.append(song.info.release());
        tags.append(song.tag);
        if (!song.reason.isEmpty())
            m_unreadable.append({files.at(done), song.reason});
        m_pCurrentTag = song.tag;
        m_pCurrentDecoder = song.decoder;
        if (song.decoder)
            m_decoderList.append(song.decoder);
        keepAlive(done + 1, files.size());
    }
    handCoversOver();
}

void LocalIntake::handCoversOver()
{
    if (m_reader.handOver())
        m_coverTimer.stop();
    else if (!m_coverTimer.isActive())
        m_coverTimer.start(coverMilliseconds);
}

void LocalIntake::keepAlive(int done, int total)
{
    if (m_sinceRepaint.elapsed() < repaintMilliseconds)
        return;
    if (m_sinceStart.elapsed() >= progressAfterMilliseconds)
        emit progress(done, total);
    const InputBarrier barrier(m_bEnded);
    QCoreApplication::processEvents();
    m_sinceRepaint.start();
}
