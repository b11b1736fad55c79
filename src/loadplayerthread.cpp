#include "loadplayerthread.h"

#include "audiocore/iaudioplayer.h"
#include "common/workers.h"

#include <QCoreApplication>
#include <QTimer>

LoadPlayerThread::~LoadPlayerThread()
{
    wait();
}

void LoadPlayerThread::startSoon()
{
    static bool asked = false;
    if (asked)
        return;
    asked = true;
    auto* const thread = new LoadPlayerThread(QCoreApplication::instance());
    QTimer::singleShot(0, thread, [thread] { Workers::start(*thread); });
}

void LoadPlayerThread::run()
{
    Workers::finish("loading the player", PreparePlayer);
}
