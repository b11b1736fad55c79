#pragma once

#include "centerfoot.h"
#include "common/footline.h"
#include "dropzone.h"
#include "fileadding.h"
#include "groupdeletion.h"
#include "songs/modesongs.h"

#include <QList>
#include <QStringList>
#include <QWidget>

#include <memory>

class CenterChanges;
class CenterKeys;
class EmptyViews;
class QModelIndex;
class QShortcut;
class ShownGroup;
class SongViews;
class ViewInSight;
struct QMusicInfo;

namespace Ui {
class CenterWidget;
}

/// The content area: the songs of the mode in force, the four views on them, and the panels of one song and
/// of one duplicate group. Joins what takes files in, what shows songs and what changes them. GUI thread
/// only.
class CenterWidget : public QWidget
{
    Q_OBJECT

public:
    explicit CenterWidget(QWidget* parent = nullptr);
    ~CenterWidget() override;

    /// Classifies the songs of an iTunes scan; the list stays the caller's and must outlive its use here.
    void setMusicInfoList(QList<QMusicInfo*>* list);
    /// Classifies the local songs added so far.
    void setLocalMusicInfo();
    /// The same because the user asks for it: what was done before cannot be taken back any more.
    void ScanLocalMusic();
    int ReturnUndefinedMusicCount() const { return m_songs.classification().undefinedSongs().size(); }
    /// Oddity 11: the number of groups, not of songs.
    int ReturnDuplicateMusicCount() const { return m_songs.classification().groups().size(); }

    /// From here to the next switch nothing is taken in: what came would go with the mode that is left.
    void PrepareModeSwitch() { m_bLeavingMode = true; }
    void SwitchToLocalCleanModel() { enterMode(true); }
    void SwitchToiTunesCleanModel() { enterMode(false); }
    void ClearSelectedWidget();
    void ShowWidget();
    /// After cover files were written.
    void showCoversAnew();

    /// Takes files and folders in as a drop of them does: nothing out of the local mode, nor while it is
    /// left.
    void TakeDroppedPaths(const QStringList& paths) { m_adding.takeDropped(paths); }
    /// The same for files and folders that the user named, Windows Media files included.
    void TakeNamedPaths(const QStringList& paths) { m_adding.takeNamed(paths); }
    /// Whether an intake fills the lists of songs, or a thread deletes what they hold or takes a change of it
    /// back: none may see them emptied or filled by others, so switching modes waits for its end.
    bool ListsAreInUse() const;
    /// What has the focus for the views.
    QWidget* viewFocus() const;
    /// Ends a running intake for good, without its message; for when the window closes.
    void StopIntake() { m_adding.intake().stop(); }

signals:
    /// Oddity 18: declared, never emitted.
    void emitShowMusicDetailedInfo(QMusicInfo* song);
    void emitUndefinedMusicCount(int count);
    void emitDuplicateMusicCount(int groups);
    void emitMusicCount(int all, int undefined, int groups);
    void emitFinishScanninglocalMusic();
    void emitStartToPlayMusic(QMusicInfo* song);
    void emitSetNavigViewBtn();
    void emitForbidClickNavigBtn(bool forbid);
    /// Several times a second while files are read for longer than a blink.
    void emitIntakeProgress(int done, int total);
    /// When nothing is read any more, whatever came of it; before anything else of the intake.
    void emitIntakeEnded();
    /// When files were read, before the message about it.
    void emitIntakeFinished();
    /// For the foot of the window.
    void emitTold(const FootText& told);
    /// What can be taken back now, for the foot of the window; without a caption there is nothing.
    void emitUndoOffered(const FootText::Link& link);
    /// As a click on the row of duplicates in the navigation pane.
    void emitChooseDuplicates();
    /// As a click on a row there, counted from the top.
    void emitChooseRow(int row);

public slots:
    void OnBtnGridView();
    void OnBtnTableView();
    void OnBtnOpenFile() { m_adding.choose(); }
    void DragMusicIntoLocalToAddFile(const QString& path) { m_adding.find(path); }
    void DragMusicIntoiTunes() {}
    void slotShowAllmusicView();
    void slotShowUndefineMusicView();
    void slotShowDuplicateMusicView();
    void SlotClickAllMusicIndex(const QModelIndex& index);
    void SlotClickDupMusicIndex(const QModelIndex& index);
    void SlotDoubleClickAllMusicIndex(const QModelIndex& index);
    void SlotDoubleClickDupMusicIndex(const QModelIndex& index);
    void SlotForbidToClickView(bool forbid);
    void SlotHiddenMusicDetailedWidget();
    void SlotMusicInfoHaveBeEdited();
    /// Deletes one song of the current group: off the disk in the local mode, and out of the lists.
    void SlotDeleteMupMusicWasSelected(QMusicInfo* song);
    /// Reduces every group to its first song on a thread, while the user waits.
    void SlotDeleteAllDupMusic();
    void SlotAllMusicInfoAfterDeleting();
    void SlotScanAddedFiles();
    /// Takes the newest change back, while nothing else is at the lists.
    void SlotUndo();

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void Init();
    void InitView();
    void InitConnect();
    void connectPanels();
    void connectFoot();

    QString whyNoFiles() const;
    void showGroup(int row);
    void enterMode(bool local);

    std::unique_ptr<Ui::CenterWidget> ui;
    DropZone m_dropZone;

    bool m_bForbidClick = false;
    SongViews* m_views = nullptr;
    EmptyViews* m_empty = nullptr;
    std::unique_ptr<ViewInSight> m_inSight;
    std::unique_ptr<ShownGroup> m_shownGroup;
    CenterKeys* m_keys = nullptr;
    CenterChanges* m_changes = nullptr;
    QShortcut* m_openShortcut = nullptr;

    ModeSongs m_songs;
    CenterFoot m_foot;
    GroupDeletion m_deletion;

    FileAdding m_adding;
    bool m_bLeavingMode = false;
};
