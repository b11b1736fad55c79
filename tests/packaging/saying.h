#pragma once

#include "programrun.h"

/// What a program says, and how it ends.
struct Said
{
    int code; ///< -1 when the program is not there, -2 when it does not end
    QString output;
};

/// Has one of the system, or the one at a path, say it in a home of its own.
inline Said say(const QString& program, const QStringList& arguments)
{
    ProgramRun run;
    run.set("MANWIDTH", "80");
    run.set("LC_ALL", "C.UTF-8");
    run.process.setProcessChannelMode(QProcess::MergedChannels);
    const QString path = QStandardPaths::findExecutable(program);
    if (path.isEmpty())
        return {-1, program + " is not installed"};
    run.start(path, arguments);
    if (!run.process.waitForFinished(patience))
        return {-2, "it does not end"};
    return {run.process.exitCode(), QString::fromUtf8(run.process.readAll())};
}
