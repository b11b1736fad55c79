#pragma once

#include "patience.h"

#include <QDeadlineTimer>
#include <QProcess>

/// What a program that runs beside a test tells, line by line.
class Told
{
public:
    explicit Told(QProcess& process) : m_process(process) {}

    /// The next line that begins so; empty where none comes in that time.
    QByteArray line(const QByteArray& begin = QByteArray(), int milliseconds = patience)
    {
        const QDeadlineTimer end(milliseconds);
        for (;;) {
            while (m_process.canReadLine()) {
                const QByteArray line = m_process.readLine().trimmed();
                if (line.startsWith(begin))
                    return line;
            }
            if (!m_process.waitForReadyRead(int(end.remainingTime())) && !m_process.canReadLine())
                return QByteArray();
        }
    }
    QList<int> numbers(const QByteArray& begin, int milliseconds = patience)
    {
        QList<int> numbers;
        for (const QByteArray& word : line(begin, milliseconds).mid(begin.size()).split(' '))
            numbers.append(word.toInt());
        return numbers;
    }
    void forget() { m_process.readAllStandardOutput(); }

private:
    QProcess& m_process;
};
