#pragma once

#include <QObject>

/// The signals by which the system, a terminal or another program asks this one to end: SIGTERM, SIGINT and
/// SIGHUP. Where there are none, nothing ever arrives. A signal that the process was started to ignore stays
/// ignored.
class EndingSignals : public QObject
{
    Q_OBJECT

public:
    /// From now on such a signal does not end the process at once. Before there are further threads.
    static void hold();
    /// For the end of `main`: when a signal arrived, the process dies by the first one, as whoever waits for
    /// it expects (a shell makes 128 + its number of it, and a script ends at Ctrl+C). Otherwise, and where
    /// the process cannot die of it, gives the exit code.
    static int passOn(int exitCode);

    /// Tells of held signals from its thread's event loop.
    explicit EndingSignals(QObject* parent = nullptr);

signals:
    /// At least once when signals arrived, also before this object was made.
    void arrived();

private:
    void takeIn();
};
