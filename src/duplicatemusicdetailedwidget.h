#pragma once

#include "collection/fileremoval.h"
#include "collection/keptfiles.h"
#include "common/footline.h"
#include "deletedupmusicinfodlg.h"
#include "songs/removaltally.h"

#include <QList>
#include <QWidget>

#include <memory>
#include <utility>

class DupMusicbarWidget;
class PlaySongWidget;
struct DupMusicInfo;
struct QMusicInfo;

namespace Ui {
class DuplicateMusicDetailedWidget;
}

/// The panel at the right that lists one duplicate group row by row, asks for deletions, and plays songs in
/// the one playback window, which it owns.
class DuplicateMusicDetailedWidget : public QWidget
{
    Q_OBJECT

public:
    explicit DuplicateMusicDetailedWidget(QWidget* parent = nullptr);
    ~DuplicateMusicDetailedWidget() override;

    /// Shows a row for each song, the first one marked to be kept, and the panel; no list: forgets the group
    /// shown. The list and its songs must outlive their being shown.
    void SetDuplicateMusicDetailedInfo(QList<QMusicInfo*>* list);
    /// The same, and marks those of the songs to be kept, too.
    void showKeeping(QList<QMusicInfo*>* list, const QList<QMusicInfo*>& kept);
    /// All groups, for what clearing them would do; they must outlive the panel, or be taken back (null).
    void setGroups(const QList<DupMusicInfo*>* groups) { m_groups = groups; }
    /// Whether the rows shown are those of this list.
    bool shows(const QList<QMusicInfo*>& list) const { return m_pMusicList == &list; }
    /// The row that keys act on, with a mark of its own; null while none is to be seen.
    DupMusicbarWidget* rowAtHand() const;
    void setRowAtHand(DupMusicbarWidget* row);
    /// The row at a point of the screen; null for none.
    DupMusicbarWidget* rowAt(const QPoint& place) const;
    /// Goes on by so many rows, or none, and brings the row into sight, if there is one.
    void moveRowAtHand(int steps);
    /// As a click on "Clear this group", which does nothing while the button is not to be seen.
    void clear();
    /// The songs of the rows marked to be kept.
    QList<QMusicInfo*> keptSongs() const { return songsOfRows(true); }
    /// What the deletion under way must leave on disk for their sake; nothing where songs are tracks.
    const KeptFiles& keptFiles() const { return m_keptFiles; }
    /// Takes the files of the deletion under way.
    FileRemoval& fileRemoval() { return *m_fileRemoval; }
    /// What the last deletion did with the files of this group, or its tracks.
    RemovalTally takeTally() { return std::exchange(m_tally, RemovalTally()); }

public slots:
    void SlotOnBtnDeleteSongWasSelected();
    void SlotOnBtnDeleteAllSong();
    void SlotDeleteSongWasSelected();
    void SlotStartPlaySong(QMusicInfo* song);
    void SlotBeginToPlayTableViewMusic(QMusicInfo* song);
    void SlotSongStopBtnHidden();
    void SlotSongPlayBtnHidden();
    void SlotSetDeleteBtn(int count);

signals:
    /// One song is to leave the lists, and in the local mode the disk; handled before this returns.
    void emitDeleteDupMusicWasSelected(QMusicInfo* song);
    void emitDeleteAllDupMusic();
    /// At the end of a deletion, unless it is the beginning of clearing all groups.
    void emitGroupCleared();
    /// For the foot of the window.
    void emitTold(const FootText& told);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void goTo(const QWidget* focus);
    void hideRows();
    void clearRows();
    QWidget* placeOfRowsInTabOrder() const;
    DupMusicbarWidget* addRow(QMusicInfo* song);
    void markBestRow();
    void countRows();
    QList<QMusicInfo*> songsOfRows(bool kept) const;
    bool userAgrees();
    void deleteRow(int position);
    void removeLastRow();
    bool rowsMatchSongs() const;
    void deleteUncheckedRows();
    void deleteUncheckedSongs();
    void showButtons(bool visible);
    void play(QMusicInfo* song, bool fromDupBar);

    std::unique_ptr<Ui::DuplicateMusicDetailedWidget> ui;
    QList<QMusicInfo*>* m_pMusicList = nullptr;
    const QList<DupMusicInfo*>* m_groups = nullptr; ///< not owned
    QList<DupMusicbarWidget*> m_listBarWidget;      ///< one row per song, same index; null for one that went
    std::unique_ptr<PlaySongWidget> m_pPlaySongWidget;
    int m_rowAtHand = 0;                        ///< its position
    DupMusicbarWidget* m_pCurPlayBar = nullptr; ///< the row that started the playback last
    KeptFiles m_keptFiles;                      ///< empty but for a deletion
    std::unique_ptr<FileRemoval> m_fileRemoval; ///< a new one for each deletion
    RemovalTally m_tally;
    DeleteDupMusicInfoDlg m_deleteDlg;
};
