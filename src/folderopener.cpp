#include "folderopener.h"

#include <QDir>
#include <QProcess>

QString FolderOpener::folderOf(const QString& location)
{
    int separator = location.lastIndexOf(QLatin1Char('/'));
#ifdef Q_OS_WIN
    separator = qMax(separator, location.lastIndexOf(QLatin1Char('\\')));
#endif
    return location.left(qMax(separator, 0));
}

void FolderOpener::open(const QString& folder)
{
    if (folder.isEmpty()) {
        qWarning("no folder can be opened: the song lies in none");
        return;
    }
#if defined(Q_OS_MACOS)
    // Not quoted: a path with blanks is taken for several, which is accepted.
    QStringList words = QProcess::splitCommand(QLatin1String("open ") + folder);
    const QString program = words.takeFirst();
    const bool started = QProcess::startDetached(program, words);
#elif defined(Q_OS_WIN)
    const bool started =
        QProcess::startDetached(QStringLiteral("explorer"), {QDir::toNativeSeparators(folder)});
#else
    const bool started = QProcess::startDetached(QStringLiteral("xdg-open"), {folder});
#endif
    if (!started)
        qWarning("the folder %s cannot be opened: no file browser was started", qUtf8Printable(folder));
}
