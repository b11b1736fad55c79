#include "fileadding.h"

#include "filechoice.h"
#include "intakedialogs.h"

#include <QDebug>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QTimer>
#include <QUrl>

#include <utility>

int m_local_add_or_ScanAgain = 0;

namespace {
/// What a drop brings; an empty path for what is no file.
QStringList pathsOf(const QMimeData& dropped)
{
    QStringList paths;
    for (const QUrl& url : dropped.urls())
        paths.append(url.toLocalFile());
    return paths;
}
} // namespace

FileAdding::FileAdding(QWidget& window, QList<QMusicInfo*>& songs, QList<IAudioTag*>& tags,
                       std::function<QString()> whyNot)
    : m_window(window), m_songs(songs), m_tags(tags), m_whyNot(std::move(whyNot))
{
}

void FileAdding::greet(QDragEnterEvent& event) const
{
    if (!takesFiles()) {
        event.ignore();
        return;
    }
    event.accept();
    if (event.mimeData()->hasFormat(QStringLiteral("text/uri-list")))
        event.acceptProposedAction();
}

void FileAdding::receive(QDropEvent& event)
{
    const QStringList paths = pathsOf(*event.mimeData());
    if (paths.isEmpty() || !takesFiles())
        return;
    event.acceptProposedAction();
    // The source of the drag waits for this handler: it is let go before the long work starts.
    QTimer::singleShot(0, this, [this, paths] { takeDropped(paths); });
}

void FileAdding::takeDropped(const QStringList& paths)
{
    m_bWindowsMediaNamed = false;
    take(paths);
}

void FileAdding::takeNamed(const QStringList& paths)
{
    m_bWindowsMediaNamed = true;
    take(paths);
}

void FileAdding::find(const QString& path)
{
    const FileCollection::Found found = m_intake.collect(path, m_found.size());
    m_found += found.music;
    (m_bWindowsMediaNamed ? m_found : m_windowsMediaLeftOut) += found.windowsMedia;
}

void FileAdding::take(const QStringList& paths)
{
    const QString reason = m_whyNot();
    if (!reason.isEmpty()) {
        qWarning("%d dropped paths are not added: %s", paths.size(), qUtf8Printable(reason));
        return;
    }
    m_found.clear();
    m_windowsMediaLeftOut.clear();
    m_intake.begin();
    for (int i = 0; i < paths.size() && m_intake.goesOn(); ++i)
        find(paths.at(i));
    m_bFromDrop = true;
    choose();
    emit pathsTaken();
}

void FileAdding::choose()
{
    const bool fromDrop = std::exchange(m_bFromDrop, false);
    if (!takesFiles())
        return;
    if (!fromDrop) {
        m_windowsMediaLeftOut.clear();
        m_intake.begin();
    }
    if (fromDrop && (m_found.isEmpty() || m_intake.wasEnded())) {
        emit ended();
        emit told(result(0, m_found.size()));
        if (!m_intake.wasEnded())
            offerDialog();
        return;
    }
    const QStringList files = fromDrop ? m_found : chosenFiles();
    if (!files.isEmpty())
        add(files);
}

/// What the user chooses; nothing where the mode went meanwhile.
QStringList FileAdding::chosenFiles() const
{
    QStringList files = FileChoice::music(&m_window);
    if (files.isEmpty() || takesFiles())
        return files;
    qWarning("%d chosen files are not added: the local mode is left", files.size());
    return {};
}

void FileAdding::offerDialog()
{
    if (!m_intake.isStopped() && IntakeDialogs::offerChoice())
        choose();
}

void FileAdding::add(const QStringList& files)
{
    m_bAdded = true;
    m_local_add_or_ScanAgain = 1;
    const int before = m_songs.size();
    m_intake.add(files, m_songs, m_tags);
    emit ended();
    emit finished();
    if (m_intake.isStopped())
        return;
    emit told(result(m_songs.size() - before, files.size()));
    if (IntakeDialogs::offerScan() && takesFiles())
        emit scanWanted();
}

/// What is told of so many files that were read of those that were to be.
FootText FileAdding::result(int files, int wanted) const
{
    const bool none = files == 0;
    FootLines::Intake intake = {files, none ? 0 : m_intake.unreadable().size(), m_windowsMediaLeftOut.size()};
    intake.ended = m_intake.wasEnded() && (none || files < wanted);
    intake.wanted = wanted;
    return IntakeDialogs::result(intake, none ? QVector<LocalIntake::Unreadable>() : m_intake.unreadable(),
                                 m_windowsMediaLeftOut, &m_window);
}
