#pragma once

#include "songs/changehistory.h"

#include <QString>

#include <functional>

class QWidget;

/// Does work on a thread while the user waits: before a dialog that says how far it is, once it takes longer
/// than a blink. GUI thread only.
class WaitedWork
{
public:
    struct Task
    {
        const char* name; ///< for the log
        QString doing;    ///< for the dialog
        std::function<void(const Progress&)> work;
    };

    /// Returns when the work is over; if that takes long, the event loop runs meanwhile. The end of the
    /// program ends it early, by what it is told of its progress. Where no thread can be had it is done here.
    void run(const Task& task, QWidget& window);
    bool isRunning() const { return m_bRunning; }

private:
    bool m_bRunning = false;
};
