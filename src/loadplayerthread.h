#pragma once

#include <QThread>

/// Loads what plays songs while the user looks at one, so that its first play need not wait for the disk.
class LoadPlayerThread : public QThread
{
    Q_OBJECT

public:
    /// One run is enough for the program: what is called again costs nothing. It begins when the events that
    /// wait are handled, since what they show needs the disk first, and the application waits for its end.
    /// GUI thread.
    static void startSoon();

protected:
    void run() override;

private:
    using QThread::QThread;
    ~LoadPlayerThread() override;
};
