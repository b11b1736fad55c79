#include "folderopener.h"

#include "songs/footlines.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QUrl>

namespace {
/// The path of a file URL on this machine; other texts as they stand.
QString pathOf(const QString& folder)
{
    QUrl url(folder, QUrl::StrictMode);
    if (url.scheme() != QLatin1String("file") || url.hasQuery() || url.hasFragment())
        return folder;
    if (url.host() == QLatin1String("localhost"))
        url.setHost(QString());
    return url.host().isEmpty() ? url.toLocalFile() : folder;
}

/// Anything else could be started by the file browser, or be taken for an option: what begins with "-" is no
/// absolute path. A bundle is a folder that is a program.
bool isFolder(const QString& path)
{
    const QFileInfo info(path);
    return info.isAbsolute() && info.isDir() && !info.isBundle();
}
} // namespace

QString FolderOpener::folderOf(const QString& location)
{
    int separator = location.lastIndexOf(QLatin1Char('/'));
#ifdef Q_OS_WIN
    separator = qMax(separator, location.lastIndexOf(QLatin1Char('\\')));
#endif
    return location.left(qMax(separator, 0));
}

bool FolderOpener::open(const QString& folder)
{
    if (!isFolder(pathOf(folder))) {
        qWarning("\"%s\" is not opened: it is no folder of this machine", qUtf8Printable(folder));
        return true;
    }
    // One argument, blanks or not.
#if defined(Q_OS_MACOS)
    const bool started = QProcess::startDetached(QStringLiteral("open"), {folder});
#elif defined(Q_OS_WIN)
    const bool started =
        QProcess::startDetached(QStringLiteral("explorer"), {QDir::toNativeSeparators(pathOf(folder))});
#else
    const bool started = QProcess::startDetached(QStringLiteral("xdg-open"), {folder});
#endif
    if (!started)
        qWarning("the folder %s cannot be opened: no file browser was started", qUtf8Printable(folder));
    return started;
}

FootText FolderOpener::show(const QString& location)
{
    return open(folderOf(location)) ? FootText()
                                    : FootText{FootLines::noOpener(FootLines::Opened::Folder), true, {}};
}
