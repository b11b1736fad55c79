#include "musicdetailedinfowidget.h"

#include "common/messagedialog.h"
#include "covereditor.h"
#include "identifythread.h"
#include "keepoffers.h"
#include "loadplayerthread.h"
#include "songidentification.h"
#include "songlabels.h"
#include "songs/changehistory.h"
#include "songs/footlines.h"
#include "songs/songfields.h"
#include "ui_musicdetailedinfowidget.h"

#include <QKeyEvent>
#include <QPainter>

#include <utility>

MusicDetailedInfoWidget::MusicDetailedInfoWidget(QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::MusicDetailedInfoWidget>())
{
    ui->setupUi(this);
    m_editors = std::make_unique<SongEditors>(SongEditors::Widgets{ui->m_lineTitle, ui->m_lineArtist,
                                                                   ui->m_lineAlbum, ui->m_lineYear,
                                                                   ui->m_lineTrackNo, ui->m_comboGenre});
    m_labels = std::make_unique<SongLabels>(SongLabels::Widgets{ui->m_titleName, ui->m_artistName,
                                                                ui->m_albumName, ui->m_yearNumber,
                                                                ui->m_trackNoName, ui->m_genreName});
    m_keepOffers = new KeepOffers(*ui->currentImgWidget, *ui->m_comboGenre, *ui->m_gridLayout);
    m_cover = std::make_unique<CoverEditor>(*ui->currentImgWidget, *m_keepOffers);
    m_identification = std::make_unique<SongIdentification>(
        SongIdentification::Widgets{*ui->m_labMovie, *ui->m_btnApply}, this);
    InitBtn();
    InitConnect();
    HiddenLineEdit();
}

MusicDetailedInfoWidget::~MusicDetailedInfoWidget() = default;

void MusicDetailedInfoWidget::InitBtn()
{
    ui->m_btnApply->setBtnImage(SkinPicture::path("btn_apply.png"));
    ui->m_btnApply->setChangesFiles(true); // it lies in the place of Edit
    ui->m_btnCancel->setBtnImage(SkinPicture::path("button_edit_close.png"));
    ui->m_btnEdit->setBtnImage(SkinPicture::path("button_edit.png"));
    ui->m_btnIdentify->setBtnImage(SkinPicture::path("btn_identify.png"));
    ui->m_btnEdit->setToolTip(QStringLiteral("edit music information"));
    ui->m_btnEdit->setDefault(true);
    ui->m_btnCancel->hide();
    ui->m_btnApply->hide();
    ui->gridLayoutWidget->setStyleSheet(QStringLiteral("QComboBox{padding-left:5px}"));
}

void MusicDetailedInfoWidget::InitConnect()
{
    connect(ui->m_btnEdit, SIGNAL(clicked()), this, SLOT(SlotOnBtnEdit()));
    connect(ui->m_btnApply, SIGNAL(clicked()), this, SLOT(SlotOnBtnApply()));
    connect(ui->m_btnCancel, SIGNAL(clicked()), this, SLOT(SlotOnBtnCancel()));
    connect(ui->currentImgWidget, SIGNAL(widgetClick()), this, SLOT(SlotChangeImage()));
    connect(ui->m_btnIdentify, SIGNAL(clicked()), this, SLOT(SlotOnBtnIdentify()));
    connect(m_cover.get(), &CoverEditor::told, this, &MusicDetailedInfoWidget::emitTold);
    connect(m_identification.get(), &SongIdentification::running, this,
            &MusicDetailedInfoWidget::emitForbidToClickView);
}

void MusicDetailedInfoWidget::SetMusicDetailedInfo(QMusicInfo* song)
{
    if (song)
        tellOfLeaving();
    if (song != m_pMusicInfo)
        forgetFormerSong();
    m_pMusicInfo = song;
    m_cover->setSong(song);
    if (!song) {
        hide();
        return;
    }
    m_bNewSong = true;
    ShowMusicInfo();
    LoadPlayerThread::startSoon();
}

void MusicDetailedInfoWidget::leave()
{
    tellOfLeaving();
    if (isEditing())
        SlotOnBtnCancel();
}

/// Of an edit that ends without an apply, though the user did not cancel it.
void MusicDetailedInfoWidget::tellOfLeaving()
{
    QMusicInfo* const song = m_pMusicInfo;
    if (!song || !isEditing() || !m_editors->isChanged())
        return;
    const SongEditors::Held typed = m_editors->held();
    emit emitTold({FootLines::leftWithoutSaving(SongFields::shownName(song)),
                   false,
                   {{QStringLiteral("Edit again"), [this, song, typed] { editAgain(song, typed); }}}});
}

void MusicDetailedInfoWidget::editAgain(QMusicInfo* song, const SongEditors::Held& typed)
{
    SetMusicDetailedInfo(song);
    edit(song);
    m_editors->fill(typed);
    if (m_editors->held().genre != typed.genre)
        m_keepOffers->keepGenre(); // the song's own, which is not in the list
}

void MusicDetailedInfoWidget::edit(QMusicInfo* song)
{
    if (song != m_pMusicInfo || !isVisible())
        SetMusicDetailedInfo(song);
    if (!isEditing())
        SlotOnBtnEdit();
    ui->m_lineTitle->setFocus();
    emit emitEditedAgain();
}

void MusicDetailedInfoWidget::identify(QMusicInfo* song)
{
    edit(song);
    IdentifyMusic();
}

/// What was identified is not about the song that comes.
void MusicDetailedInfoWidget::forgetFormerSong()
{
    m_bIdentified = false;
    ui->m_btnIdentify->setBtnImage(SkinPicture::path("btn_identify.png"));
    if (isIdentifying())
        m_identification->cancel();
}

void MusicDetailedInfoWidget::showAnew()
{
    if (isHidden()) // it is shown anew when it comes
        return;
    m_bNewSong = true;
    if (!isEditing()) {
        ShowMusicInfo();
        return;
    }
    showTexts(); // as they are under the editors
    m_bNewSong = false;
    m_cover->showAnew();
}

void MusicDetailedInfoWidget::ShowMusicInfo()
{
    m_cover->end();
    showTexts();
    m_bNewSong = false;
    showButtons(false);
    SetTextLabelAndLineState();
    show();
}

void MusicDetailedInfoWidget::showTexts()
{
    m_labels->show(m_bNewSong ? SongEditors::of(m_pMusicInfo) : m_typed);
}

void MusicDetailedInfoWidget::showButtons(bool editing)
{
    const bool hasFocus = isAncestorOf(window()->focusWidget());
    const bool comesBack = m_formerFocus && m_formerFocus->isVisible();
    ui->m_btnEdit->setVisible(!editing);
    ui->m_btnIdentify->setVisible(!editing);
    // Or the focus would go to wherever it finds a place, once what has it is hidden.
    if (hasFocus && !editing)
        (comesBack ? m_formerFocus.data() : ui->m_btnEdit)->setFocus();
    ui->m_btnApply->setVisible(editing);
    ui->m_btnCancel->setVisible(editing);
}

void MusicDetailedInfoWidget::HiddenLineEdit()
{
    m_keepOffers->end();
    m_editors->setVisible(false);
}

void MusicDetailedInfoWidget::SetTextLabelAndLineState()
{
    HiddenLineEdit();
    m_labels->setVisible(true);
}

bool MusicDetailedInfoWidget::isEditing() const
{
    return !ui->m_btnApply->isHidden();
}

bool MusicDetailedInfoWidget::isIdentifying() const
{
    return m_identification->isRunning();
}

void MusicDetailedInfoWidget::SlotOnBtnEdit()
{
    if (QWidget* focus = window()->focusWidget(); !isEditing())
        m_formerFocus = isAncestorOf(focus) ? nullptr : focus;
    m_bIdentifyFailed = false;
    m_editors->show(m_pMusicInfo);
    m_labels->setVisible(false);
    m_editors->setVisible(true);
    m_keepOffers->begin(SongFields::genre(m_pMusicInfo));
    m_cover->begin();
    showButtons(true);
    ui->m_lineTitle->setFocus();
}

void MusicDetailedInfoWidget::SlotOnBtnCancel()
{
    showButtons(false);
    SetTextLabelAndLineState();
    m_cover->end();
    m_identification->cancel();
    // Oddity 38: a cover that was chosen stays chosen; the next apply uses it.
}

void MusicDetailedInfoWidget::ShowAllTextLabelAndLineEind()
{
    SlotOnBtnEdit();
    for (QLabel* caption : {ui->m_titleLabel, ui->m_artistLabel, ui->m_albumLabel, ui->m_genreLabel,
                            ui->m_yearLabel, ui->m_trackNoLabel})
        caption->show();
}

void MusicDetailedInfoWidget::IdentifyMusic()
{
    ShowAllTextLabelAndLineEind();
    m_identification->start(m_pMusicInfo);
}

void MusicDetailedInfoWidget::SlotReceiveIdentifyInfo(const QStringList& info)
{
    if (m_identification->isStale(sender(), m_pMusicInfo))
        return;
    // Oddity 40: also after Cancel, into the hidden editors.
    for (const QString& element : info)
        if (!element.isEmpty())
            m_editors->fill(element.at(0), element.mid(1));
    m_bIdentified = true;
    if (isIdentifying() && m_identification->worker())
        emit emitTold(m_identification->words(m_identification->worker()));
    m_identification->end();
}

void MusicDetailedInfoWidget::SlotReceiveIdentifyCover(const QString& path)
{
    if (m_identification->isStale(sender(), m_pMusicInfo))
        return;
    m_cover->takeIdentified(path);
}

void MusicDetailedInfoWidget::SlotOnFailIdentifyTips()
{
    if (m_identification->isStale(sender(), m_pMusicInfo))
        return;
    const auto* worker = qobject_cast<IdentifyThread*>(sender());
    m_identification->end();
    m_bIdentifyFailed = true;
    // Who cancelled knows.
    if (worker && worker->isCancelled())
        return;
    emit emitTold(m_identification->words(worker));
    MessageDialog::notify(QStringLiteral("Identify failed! You can edit the music information manually."),
                          "button_ok.png");
}

void MusicDetailedInfoWidget::SlotChangeImage()
{
    m_cover->choose(this);
}

SongEdit MusicDetailedInfoWidget::editedSong() const
{
    SongEdit edit = m_editors->edit();
    edit.newCoverPath = m_cover->newPath();
    edit.coverKept = m_cover->isOwnKept();
    return edit;
}

void MusicDetailedInfoWidget::tellOfSave(const SongEditing::Outcome& outcome)
{
    QMusicInfo* const song = m_pMusicInfo;
    FootText told{SongEditing::lineOf(*song, outcome), outcome.failed(), {}};
    const bool isGone = outcome.library == ITUNES_EDIT_DONE && outcome.file == SAVE_FILE_GONE;
    if (outcome.failed() && !isGone)
        told.links.append({QStringLiteral("Show what the file says"), [this, song] { takeBack(song); }});
    emit emitTold(told);
}

void MusicDetailedInfoWidget::takeBack(QMusicInfo* song)
{
    if (!SongEditing::takeBack(*song))
        return;
    emit emitTold(FootText());
    if (song == m_pMusicInfo)
        showAnew();
    emit emitMusicCoverHasChanged();
}

void MusicDetailedInfoWidget::SlotOnBtnApply()
{
    if (!m_pMusicInfo)
        return;
    m_typed = m_editors->held();
    SongEditing::Outcome outcome = SongEditing::apply(*m_pMusicInfo, editedSong());
    if (m_history)
        m_history->add(std::move(outcome.change));
    if (outcome.coverChanged)
        emit emitMusicCoverHasChanged();
    if (outcome.coverUsed)
        m_cover->forgetNew();
    ShowMusicInfo();
    tellOfSave(outcome);
    emit emitMusicInfoHasChanged();
    if (m_bIdentified) {
        ui->m_btnIdentify->setBtnImage(SkinPicture::path("btn_identifyagain.png"));
        m_bIdentified = false;
        update();
    }
}

/// After a failure Enter applies what was typed alone: it may be meant for the message that told of it.
void MusicDetailedInfoWidget::keyPressEvent(QKeyEvent* event)
{
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    const bool apply = enter && event->modifiers().testFlag(Qt::ControlModifier);
    if (!isEditing() || (!enter && event->key() != Qt::Key_Escape)) {
        QWidget::keyPressEvent(event);
        return;
    }
    if (!enter || (!apply && ui->m_btnCancel->hasFocus()))
        SlotOnBtnCancel();
    else if (ui->m_btnApply->isEnabled() &&
             (apply || !m_bIdentifyFailed || m_editors->isChangedIn(focusWidget())))
        SlotOnBtnApply();
}

void MusicDetailedInfoWidget::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    m_face.paint(painter, rect(), ui->gridLayoutWidget->geometry(), ui->m_gridLayout->rowCount());
}
