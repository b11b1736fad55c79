#include "songidentification.h"

#include "audiocore/iaudioidentifier.h"
#include "common/qimagebutton.h"
#include "common/skinmovie.h"
#include "common/workers.h"
#include "identifythread.h"
#include "songs/songfields.h"

#include <QLabel>

SongIdentification::SongIdentification(const Widgets& widgets, QObject* panel)
    : m_widgets(widgets), m_panel(panel)
{
    m_widgets.movie.hide();
}

SongIdentification::~SongIdentification()
{
    // All are cancelled before the first is waited for.
    for (IdentifyThread* worker : m_panel->findChildren<IdentifyThread*>())
        worker->CloseTheIdentifier();
}

IdentifyThread* SongIdentification::makeWorker(const QMusicInfo* song)
{
    auto* worker = new IdentifyThread(m_panel);
    QObject::connect(worker, SIGNAL(emitReturnIdentifyInfo(QStringList)), m_panel,
                     SLOT(SlotReceiveIdentifyInfo(QStringList)));
    QObject::connect(worker, SIGNAL(emitReturnIdentifyCover(QString)), m_panel,
                     SLOT(SlotReceiveIdentifyCover(QString)));
    QObject::connect(worker, SIGNAL(emitFailToIdentify()), m_panel, SLOT(SlotOnFailIdentifyTips()));
    QObject::connect(worker, SIGNAL(finished()), worker, SLOT(deleteLater()));
    worker->ReturnIdentifyInfo(SongFields::audioPath(song));
    return worker;
}

void SongIdentification::start(const QMusicInfo* song)
{
    m_widgets.apply.setBtnImage(SkinPicture::path("identifying.png"));
    m_widgets.apply.setEnabled(false);
    m_pMovie = std::make_unique<SkinMovie>("dynamic_scanning_small.gif");
    m_widgets.movie.show();
    m_pMovie->startIn(&m_widgets.movie);
    m_pWorker = makeWorker(song);
    m_pSong = song;
    m_bRunning = true;
    emit running(true);
    if (Workers::start(*m_pWorker))
        return;
    QMetaObject::invokeMethod(m_pWorker, "emitFailToIdentify", Qt::QueuedConnection);
    m_pWorker->deleteLater();
}

void SongIdentification::end()
{
    m_bRunning = false;
    if (m_pMovie)
        m_pMovie->stop();
    m_widgets.movie.hide();
    m_widgets.apply.setBtnImage(SkinPicture::path("btn_apply.png"));
    m_widgets.apply.setEnabled(true);
    emit running(false);
}

void SongIdentification::cancel()
{
    if (m_pWorker)
        m_pWorker->CloseTheIdentifier();
    end();
}

bool SongIdentification::isStale(const QObject* worker, const QMusicInfo* shown) const
{
    return qobject_cast<const IdentifyThread*>(worker) && (worker != m_pWorker || m_pSong != shown);
}

FootText SongIdentification::words(const IdentifyThread* worker)
{
    return m_words.of(worker ? worker->status() : IDENTIFY_NOT_RUN, worker && worker->hasKey());
}
