#pragma once

#include <QStringList>
#include <QtGlobal>

#include <utility>

/// Catches the program's log for one scope, in place of the terminal. One at a time, on any thread that logs
/// alone.
class LoggedLines
{
public:
    LoggedLines()
    {
        lines().clear();
        m_former = qInstallMessageHandler(
            [](QtMsgType, const QMessageLogContext&, const QString& line) { lines().append(line); });
    }
    ~LoggedLines() { qInstallMessageHandler(m_former); }
    Q_DISABLE_COPY(LoggedLines)

    static QStringList take() { return std::exchange(lines(), QStringList()); }

private:
    static QStringList& lines()
    {
        static QStringList caught;
        return caught;
    }

    QtMessageHandler m_former = nullptr;
};
