#include "loadplayerthread.h"

#include "audiocore/iaudioplayer.h"
#include "common/workers.h"

#include <QCoreApplication>
#include <QTimer>

namespace {
constexpr char work[] = "loading the player";
}

LoadPlayerThread::~LoadPlayerThread()
{
    if (m_thread.joinable())
        m_thread.join();
}

void LoadPlayerThread::startSoon()
{
    static bool asked = false;
    if (asked)
        return;
    asked = true;
    auto* const loading = new LoadPlayerThread(QCoreApplication::instance());
    QTimer::singleShot(0, loading, &LoadPlayerThread::start);
}

void LoadPlayerThread::start()
{
    Workers::finish(work, [this] {
        m_thread = std::thread([this] {
            Workers::finish(work, PreparePlayer);
            m_finished = true;
        });
    });
}
