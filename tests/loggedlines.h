#pragma once

#include <QStringList>
#include <QtGlobal>

#include <mutex>
#include <utility>

/// Catches the program's log for one scope, in place of the terminal. One at a time, of all threads.
class LoggedLines
{
public:
    LoggedLines()
    {
        take();
        m_former = qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString& line) {
            const std::lock_guard<std::mutex> lock(caught().mutex);
            caught().lines.append(line);
        });
    }
    ~LoggedLines() { qInstallMessageHandler(m_former); }
    Q_DISABLE_COPY(LoggedLines)

    static QStringList take()
    {
        const std::lock_guard<std::mutex> lock(caught().mutex);
        return std::exchange(caught().lines, QStringList());
    }

private:
    struct Caught
    {
        std::mutex mutex;
        QStringList lines;
    };
    static Caught& caught()
    {
        static Caught all;
        return all;
    }

    QtMessageHandler m_former = nullptr;
};
