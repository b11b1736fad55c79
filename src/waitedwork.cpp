#include "waitedwork.h"

#include "common/screenplace.h"
#include "common/workers.h"
#include "deletingmusicwaitingdlg.h"

#include <QThread>
#include <QTimer>

#include <atomic>
#include <memory>

namespace {
constexpr unsigned long blinkMilliseconds = 100;
constexpr int progressMilliseconds = 100;

struct Progressed
{
    std::atomic<int> done{0};
    std::atomic<int> total{0};
};

void waitBeforeDialog(QThread& thread, const QString& doing, const Progressed& progressed, QWidget& window)
{
    DeletingMusicWaitingDlg dialog;
    dialog.setWork(doing);
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, &dialog, [&] {
        if (progressed.total > 0)
            dialog.showProgress(progressed.done, progressed.total);
    });
    look.start(progressMilliseconds);
    QObject::connect(&thread, &QThread::finished, &dialog, &DeletingMusicWaitingDlg::finish);
    if (thread.isFinished()) // perhaps before the dialog listened
        return;
    ScreenPlace::putOver(dialog, dialog.card(), window);
    dialog.exec();
}
} // namespace

void WaitedWork::run(const Task& task, QWidget& window)
{
    Progressed progressed;
    const Progress tell = [&progressed](int done, int total) {
        progressed.done = done;
        progressed.total = total;
        return !QThread::currentThread()->isInterruptionRequested();
    };
    const auto work = [&] { Workers::finish(task.name, [&] { task.work(tell); }); };
    const std::unique_ptr<QThread> thread(QThread::create(work));
    m_bRunning = true;
    if (!Workers::start(*thread)) {
        work();
    } else if (!thread->wait(blinkMilliseconds)) {
        waitBeforeDialog(*thread, task.doing, progressed, window);
        thread->requestInterruption(); // the program ends, unless it is over
        thread->wait();
    }
    m_bRunning = false;
}
