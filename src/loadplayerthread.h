#pragma once

#include <QObject>

#include <atomic>
#include <thread>

/// Loads what plays songs while the user looks at one, so that its first play need not wait for the disk.
class LoadPlayerThread : public QObject
{
    Q_OBJECT

public:
    /// One run is enough for the program: what is called again costs nothing. It begins when the events that
    /// wait are handled, since what they show needs the disk first, and the application waits for its end.
    /// GUI thread.
    static void startSoon();
    /// Whether the player was loaded, or tried to.
    bool isFinished() const { return m_finished; }

private:
    using QObject::QObject;
    ~LoadPlayerThread() override;
    void start();

    // Not the toolkit's: that is waited for until it says that it ends, and libraries that it loaded may
    // still clear up after it while the program goes.
    std::thread m_thread;
    std::atomic<bool> m_finished{false};
};
