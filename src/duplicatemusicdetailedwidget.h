#pragma once

#include "common/footline.h"
#include "deletedupmusicinfodlg.h"
#include "groupclearing.h"

#include <QList>
#include <QVector>
#include <QWidget>

#include <memory>

class DupMusicbarWidget;
class PlaySongWidget;
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
    /// What clearing groups does beside the rows, and what lists it is about.
    GroupClearing& clearing() { return m_clearing; }
    const GroupClearing& clearing() const { return m_clearing; }
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
    /// One song, whose file or track went, is to leave the lists; handled before this returns.
    void emitDeleteDupMusicWasSelected(QMusicInfo* song);
    void emitDeleteAllDupMusic();
    /// After the last one of a deletion, before anything else is done with the lists.
    void emitSongsWent();
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
    void putRowsInTabOrder();
    DupMusicbarWidget* addRow(QMusicInfo* song);
    void markBestRow();
    void countRows();
    QList<QMusicInfo*> songsOfRows(bool kept) const;
    bool userAgrees();
    DupMusicbarWidget* takeRow(int position);
    void deleteRows(const QList<DupMusicbarWidget*>& rows);
    void removeLastRow();
    bool rowsMatchSongs() const;
    QList<QMusicInfo*> uncheckedSongs() const;
    bool isUnchecked(int position) const;
    bool deleteUncheckedSongs();
    void showRowsThatAreLeft();
    void showButtons(bool visible);
    void play(QMusicInfo* song, bool fromDupBar);
    QVector<QRect> whatIsToBeSeen() const;

    std::unique_ptr<Ui::DuplicateMusicDetailedWidget> ui;
    QList<QMusicInfo*>* m_pMusicList = nullptr;
    QList<DupMusicbarWidget*> m_listBarWidget; ///< one row per song, same index; null for one that went
    std::unique_ptr<PlaySongWidget> m_pPlaySongWidget;
    int m_rowAtHand = 0;                        ///< its position
    DupMusicbarWidget* m_pCurPlayBar = nullptr; ///< the row that started the playback last
    GroupClearing m_clearing;
    DeleteDupMusicInfoDlg m_deleteDlg;
};
