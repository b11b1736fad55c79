#pragma once

#include "common/footline.h"
#include "detailface.h"
#include "songeditors.h"
#include "songs/songediting.h"

#include <QPointer>
#include <QStringList>
#include <QWidget>

#include <memory>

class ChangeHistory;
class CoverEditor;
class KeepOffers;
class SongIdentification;
class SongLabels;
struct QMusicInfo;

namespace Ui {
class MusicDetailedInfoWidget;
}

/// The panel at the right that shows one song's cover and tags and lets the user edit them.
///
/// Read mode shows labels; edit mode has editors in their places and a cover that can be clicked for another
/// one. Enter applies and Escape cancels. Nothing is written before an apply. An identification fills the
/// editors with what online services say of the song.
class MusicDetailedInfoWidget : public QWidget
{
    Q_OBJECT

public:
    explicit MusicDetailedInfoWidget(QWidget* parent = nullptr);
    ~MusicDetailedInfoWidget() override;

    /// Shows the song and the panel, in read mode; no song: forgets the one shown, and hides the panel. The
    /// song must outlive its being shown.
    void SetMusicDetailedInfo(QMusicInfo* song);
    void ShowMusicInfo();
    /// Where applies are noted, to be taken back; it must outlive them.
    void setHistory(ChangeHistory* history) { m_history = history; }
    /// Something else changed the song shown. An edit that is under way goes on.
    void showAnew();
    /// The panel is about to be hidden: an edit that nobody applied is told of, and over.
    void leave();
    QMusicInfo* song() const { return m_pMusicInfo; }
    /// Shows the song in edit mode, if it is not already.
    void edit(QMusicInfo* song);
    /// The same, and has it identified.
    void identify(QMusicInfo* song);
    bool isEditing() const;
    bool isIdentifying() const;

signals:
    /// After every apply.
    void emitMusicInfoHasChanged();
    /// After an apply that changed the song's cover.
    void emitMusicCoverHasChanged();
    /// True while clicks on the views are to be ignored.
    void emitForbidToClickView(bool forbid);
    /// For the foot of the window.
    void emitTold(const FootText& told);
    /// A song is in edit mode that nobody clicked for it.
    void emitEditedAgain();

public slots:
    void SlotOnBtnEdit();
    void SlotOnBtnCancel();
    void SlotOnBtnApply();
    void SlotChangeImage();
    void SlotOnBtnIdentify() { IdentifyMusic(); }
    void SlotReceiveIdentifyInfo(const QStringList& info);
    void SlotReceiveIdentifyCover(const QString& path);
    void SlotOnFailIdentifyTips();
    /// Oddity 18: declared, does nothing.
    void SlotOnRecriveInfo() {}

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void InitBtn();
    void InitConnect();
    void HiddenLineEdit();
    void SetTextLabelAndLineState();
    void ShowAllTextLabelAndLineEind();
    void IdentifyMusic();
    void forgetFormerSong();
    void showButtons(bool editing);
    void showTexts();
    void tellOfLeaving();
    void editAgain(QMusicInfo* song, const SongEditors::Held& typed);
    void tellOfSave(const SongEditing::Outcome& outcome);
    void takeBack(QMusicInfo* song);
    SongEdit editedSong() const;

    std::unique_ptr<Ui::MusicDetailedInfoWidget> ui;
    std::unique_ptr<SongEditors> m_editors;
    std::unique_ptr<SongLabels> m_labels;
    KeepOffers* m_keepOffers = nullptr;
    std::unique_ptr<CoverEditor> m_cover;
    std::unique_ptr<SongIdentification> m_identification;
    DetailFace m_face;

    bool m_bNewSong = false;
    bool m_bFirstShow = true;
    bool m_bIdentified = false;
    bool m_bIdentifyFailed = false;  ///< since the editors were opened
    SongEditors::Held m_typed;       ///< oddity 39: the labels show what was typed after an apply
    QPointer<QWidget> m_formerFocus; ///< where the edit was begun; null for the panel
    QMusicInfo* m_pMusicInfo = nullptr;
    ChangeHistory* m_history = nullptr; ///< not owned; may be null
};
