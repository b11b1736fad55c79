#pragma once

#include "common/footline.h"
#include "songs/localintake.h"

#include <QList>
#include <QObject>
#include <QStringList>

#include <functional>

class IAudioTag;
class QDragEnterEvent;
class QDropEvent;
struct QMusicInfo;

/// What Start Scan does in the local mode: 0 opens the add-files dialog, 1 scans the files already added.
extern int m_local_add_or_ScanAgain;

/// How files come into the local mode: dropped, named, or chosen in the dialog. Asks the user, and tells him
/// what was left out. GUI thread only.
class FileAdding : public QObject
{
    Q_OBJECT

public:
    /// What appends to the lists of songs and tags, which must outlive this as the window must, that the
    /// dialogs lie over. `whyNot` says why no files can be taken in now; empty when they can.
    FileAdding(QWidget& window, QList<QMusicInfo*>& songs, QList<IAudioTag*>& tags,
               std::function<QString()> whyNot);

    LocalIntake& intake() { return m_intake; }
    const LocalIntake& intake() const { return m_intake; }
    /// Whether files were ever added.
    bool hasAdded() const { return m_bAdded; }

    /// Whether what is dragged may be dropped.
    void greet(QDragEnterEvent& event) const;
    /// What is dropped is taken soon after the event, as takeDropped() does it.
    void receive(QDropEvent& event);
    /// Files and folders; Windows Media files are only for who names them.
    void takeDropped(const QStringList& paths);
    void takeNamed(const QStringList& paths);
    /// Finds the files of one path for the next choice.
    void find(const QString& path);
    /// Adds what a drop brought, else what the user chooses.
    void choose();

signals:
    /// When nothing is read any more, whatever came of it; comes first.
    void ended();
    /// When files were read, before the message about it.
    void finished();
    /// After paths were taken, whatever came of them.
    void pathsTaken();
    /// The user wants what was added to be scanned.
    void scanWanted();
    /// For the foot of the window; without a text there is nothing to tell.
    void told(const FootText& told);

private:
    void take(const QStringList& paths);
    bool takesFiles() const { return m_whyNot().isEmpty(); }
    QStringList chosenFiles() const;
    void offerDialog();
    void add(const QStringList& files);
    FootText result(int files, int wanted) const;

    QWidget& m_window;
    QList<QMusicInfo*>& m_songs;
    QList<IAudioTag*>& m_tags;
    const std::function<QString()> m_whyNot;
    LocalIntake m_intake;
    QStringList m_found;               ///< by the last drop
    QStringList m_windowsMediaLeftOut; ///< of the last drop
    bool m_bFromDrop = false;
    bool m_bWindowsMediaNamed = false;
    bool m_bAdded = false;
};
