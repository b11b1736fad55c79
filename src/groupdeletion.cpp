#include "groupdeletion.h"

#include "common/screenplace.h"
#include "common/workers.h"
#include "deletealldupmusicthread.h"
#include "deletingmusicwaitingdlg.h"

#include <QCoreApplication>
#include <QEvent>

namespace {
constexpr unsigned long interruptionMilliseconds = 5;
}

GroupDeletion::GroupDeletion(QObject* owner, const char* listsEdited)
    : m_owner(owner), m_listsEdited(listsEdited)
{
}

GroupDeletion::~GroupDeletion() = default;

bool GroupDeletion::run(const SongLists& lists, QWidget& window)
{
    if (!m_pDeleteThread) {
        m_pDeleteThread = std::make_unique<DeleteAllDupMusicThread>();
        QObject::connect(m_pDeleteThread.get(), SIGNAL(emitAllMusicInfo()), m_owner, m_listsEdited,
                         Qt::BlockingQueuedConnection);
    }
    m_pDeleteThread->wait(); // the run before may still be returning
    m_pWaitingDlg = std::make_unique<DeletingMusicWaitingDlg>();
    QObject::connect(m_pDeleteThread.get(), SIGNAL(emitProgress(int, int)), m_pWaitingDlg.get(),
                     SLOT(showProgress(int, int)));
    m_pDeleteThread->GetDupMusicBeDelete(lists.all, lists.groups, lists.undefined, lists.tags);
    m_bDeleting = true;
    if (!Workers::start(*m_pDeleteThread))
        return false;
    ScreenPlace::putOver(*m_pWaitingDlg, m_pWaitingDlg->card(), window);
    m_pWaitingDlg->exec();
    return true;
}

QVector<RemovedSong> GroupDeletion::finish()
{
    m_bDeleting = false;
    m_pWaitingDlg->finish();
    return m_pDeleteThread->takeRemovedSongs();
}

RemovalTally GroupDeletion::takeTally()
{
    return m_pDeleteThread->takeTally();
}

/// The thread ends by way of this one, which it blocks on.
void GroupDeletion::stop()
{
    if (!m_pDeleteThread)
        return;
    m_pDeleteThread->requestInterruption();
    while (!m_pDeleteThread->wait(interruptionMilliseconds)) {
        QCoreApplication::sendPostedEvents(m_pDeleteThread.get(), QEvent::MetaCall);
        QCoreApplication::sendPostedEvents(m_owner, QEvent::MetaCall);
    }
}
