#include "musicdetailedinfowidget.h"

#include "audiocore/iaudioidentifier.h"
#include "common/messagedialog.h"
#include "common/skinmovie.h"
#include "common/style.h"
#include "common/workers.h"
#include "covers/coverchoice.h"
#include "identifythread.h"
#include "keepoffers.h"
#include "loadplayerthread.h"
#include "songlabels.h"
#include "songs/changehistory.h"
#include "songs/footlines.h"
#include "songs/songcover.h"
#include "songs/songfields.h"
#include "ui_musicdetailedinfowidget.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QKeyEvent>
#include <QPainter>
#include <QStandardPaths>

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
    InitBtn();
    InitConnect();
    HiddenLineEdit();
}

MusicDetailedInfoWidget::~MusicDetailedInfoWidget()
{
    // All are cancelled before the first is waited for.
    for (IdentifyThread* worker : findChildren<IdentifyThread*>())
        worker->CloseTheIdentifier();
}

void MusicDetailedInfoWidget::InitBtn()
{
    ui->m_btnApply->setBtnImage(SkinPicture::path("btn_apply.png"));
    ui->m_btnApply->setChangesFiles(true); // it lies in the place of Edit
    ui->m_btnCancel->setBtnImage(SkinPicture::path("button_edit_close.png"));
    ui->m_btnEdit->setBtnImage(SkinPicture::path("button_edit.png"));
    ui->m_btnIdentify->setBtnImage(SkinPicture::path("btn_identify.png"));
    ui->m_btnEdit->setToolTip(QStringLiteral("edit music information"));
    ui->m_btnEdit->setDefault(true);
    ui->currentImgWidget->SetImageBackgroud(SkinPicture::path("bg_no_picture.png"), true);
    ui->currentImgWidget->setEnabled(false);
    ui->m_btnCancel->hide();
    ui->m_btnApply->hide();
    ui->m_labMovie->hide();
    ui->gridLayoutWidget->setStyleSheet(QStringLiteral("QComboBox{padding-left:5px}"));
}

void MusicDetailedInfoWidget::InitConnect()
{
    connect(ui->m_btnEdit, SIGNAL(clicked()), this, SLOT(SlotOnBtnEdit()));
    connect(ui->m_btnApply, SIGNAL(clicked()), this, SLOT(SlotOnBtnApply()));
    connect(ui->m_btnCancel, SIGNAL(clicked()), this, SLOT(SlotOnBtnCancel()));
    connect(ui->currentImgWidget, SIGNAL(widgetClick()), this, SLOT(SlotChangeImage()));
    connect(ui->m_btnIdentify, SIGNAL(clicked()), this, SLOT(SlotOnBtnIdentify()));
    m_keepOffers = new KeepOffers(*ui->currentImgWidget, *ui->m_comboGenre, *ui->m_gridLayout);
    connect(m_keepOffers, &KeepOffers::coverKept, this, &MusicDetailedInfoWidget::keepCover);
}

void MusicDetailedInfoWidget::SetMusicDetailedInfo(QMusicInfo* song)
{
    if (song)
        tellOfLeaving();
    if (song != m_pMusicInfo)
        forgetFormerSong();
    m_pMusicInfo = song;
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
    if (m_newCoverOrigin != CoverOrigin::Chosen)
        m_strNewCoverPath.clear();
    if (!m_bIdentifying)
        return;
    // The worker may have ended already, its results being on their way.
    if (m_pIdentifyThread)
        m_pIdentifyThread->CloseTheIdentifier();
    endIdentification();
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
    if (m_strNewCoverPath.isEmpty())
        showCover(SongCover::shownPath(m_pMusicInfo));
    offerToKeepCover();
}

void MusicDetailedInfoWidget::ShowMusicInfo()
{
    showCover(SongCover::shownPath(m_pMusicInfo));
    showTexts();
    m_bNewSong = false;
    showButtons(false);
    SetTextLabelAndLineState();
    ui->currentImgWidget->setEnabled(false);
    show();
}

void MusicDetailedInfoWidget::showTexts()
{
    m_labels->show(m_bNewSong ? SongEditors::of(m_pMusicInfo) : m_typed);
}

void MusicDetailedInfoWidget::showCover(const QString& path)
{
    ui->currentImgWidget->SetImageBackgroud(path, true);
}

void MusicDetailedInfoWidget::takeNewCover(const QString& path, CoverOrigin origin)
{
    m_strNewCoverPath = path;
    m_newCoverOrigin = origin;
    showCover(path);
    offerToKeepCover();
}

void MusicDetailedInfoWidget::keepCover(bool keep)
{
    const QString own = SongFields::coverPath(m_pMusicInfo);
    takeNewCover(keep ? own : QString(), CoverOrigin::Own);
    showCover(own);
}

bool MusicDetailedInfoWidget::isOwnCoverKept() const
{
    return m_newCoverOrigin == CoverOrigin::Own && !m_strNewCoverPath.isEmpty();
}

void MusicDetailedInfoWidget::offerToKeepCover()
{
    const bool kept = isOwnCoverKept();
    const bool otherShown = !kept && !m_strNewCoverPath.isEmpty();
    m_keepOffers->offerCover(SongEditing::takesCoverOut(m_pMusicInfo), otherShown, kept);
}

void MusicDetailedInfoWidget::showButtons(bool editing)
{
    const bool hasFocus = isAncestorOf(window()->focusWidget());
    ui->m_btnEdit->setVisible(!editing);
    ui->m_btnIdentify->setVisible(!editing);
    // Or the focus would go to wherever it finds a place, once what has it is hidden.
    if (hasFocus && !editing)
        ui->m_btnEdit->setFocus();
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

void MusicDetailedInfoWidget::SlotOnBtnEdit()
{
    m_bIdentifyFailed = false;
    m_editors->show(m_pMusicInfo);
    m_labels->setVisible(false);
    m_editors->setVisible(true);
    ui->currentImgWidget->setToolTip(QStringLiteral("click to add cover"));
    ui->currentImgWidget->setEnabled(true);
    if (!m_strNewCoverPath.isEmpty())
        showCover(m_strNewCoverPath); // what an apply would write
    m_keepOffers->begin(SongFields::genre(m_pMusicInfo));
    offerToKeepCover();
    showButtons(true);
    ui->m_lineTitle->setFocus();
}

void MusicDetailedInfoWidget::SlotOnBtnCancel()
{
    showButtons(false);
    SetTextLabelAndLineState();
    ui->currentImgWidget->setEnabled(false);
    showCover(SongCover::shownPath(m_pMusicInfo));
    if (m_pIdentifyThread)
        m_pIdentifyThread->CloseTheIdentifier();
    endIdentification();
    // Oddity 38: a cover that was chosen stays chosen; the next apply uses it.
}

void MusicDetailedInfoWidget::ShowAllTextLabelAndLineEind()
{
    SlotOnBtnEdit();
    for (QLabel* caption : {ui->m_titleLabel, ui->m_artistLabel, ui->m_albumLabel, ui->m_genreLabel,
                            ui->m_yearLabel, ui->m_trackNoLabel})
        caption->show();
    ui->m_btnApply->setBtnImage(SkinPicture::path("identifying.png"));
    ui->m_btnApply->setEnabled(false);
}

void MusicDetailedInfoWidget::IdentifyMusic()
{
    ShowAllTextLabelAndLineEind();
    m_pMovie = std::make_unique<SkinMovie>("dynamic_scanning_small.gif");
    ui->m_labMovie->show();
    m_pMovie->startIn(ui->m_labMovie);

    m_pIdentifyThread = new IdentifyThread(this);
    m_pIdentifiedSong = m_pMusicInfo;
    connect(m_pIdentifyThread, SIGNAL(emitReturnIdentifyInfo(QStringList)), this,
            SLOT(SlotReceiveIdentifyInfo(QStringList)));
    connect(m_pIdentifyThread, SIGNAL(emitReturnIdentifyCover(QString)), this,
            SLOT(SlotReceiveIdentifyCover(QString)));
    connect(m_pIdentifyThread, SIGNAL(emitFailToIdentify()), this, SLOT(SlotOnFailIdentifyTips()));
    connect(m_pIdentifyThread, SIGNAL(finished()), m_pIdentifyThread, SLOT(deleteLater()));
    m_pIdentifyThread->ReturnIdentifyInfo(SongFields::audioPath(m_pMusicInfo));
    m_bIdentifying = true;
    emit emitForbidToClickView(true);
    if (Workers::start(*m_pIdentifyThread))
        return;
    QMetaObject::invokeMethod(m_pIdentifyThread, "emitFailToIdentify", Qt::QueuedConnection);
    m_pIdentifyThread->deleteLater();
}

/// Stops what shows that an identification runs, and lets the user go on.
void MusicDetailedInfoWidget::endIdentification()
{
    m_bIdentifying = false;
    if (m_pMovie)
        m_pMovie->stop();
    ui->m_labMovie->hide();
    ui->m_btnApply->setBtnImage(SkinPicture::path("btn_apply.png"));
    ui->m_btnApply->setEnabled(true);
    emit emitForbidToClickView(false);
}

/// Whether a worker tells of another song than the one shown, or of a run that a later one has replaced.
bool MusicDetailedInfoWidget::isStale(const QObject* worker) const
{
    return qobject_cast<const IdentifyThread*>(worker) &&
           (worker != m_pIdentifyThread || m_pIdentifiedSong != m_pMusicInfo);
}

void MusicDetailedInfoWidget::SlotReceiveIdentifyInfo(const QStringList& info)
{
    if (isStale(sender()))
        return;
    // Oddity 40: also after Cancel, into the hidden editors.
    for (const QString& element : info)
        if (!element.isEmpty())
            m_editors->fill(element.at(0), element.mid(1));
    m_bIdentified = true;
    if (m_bIdentifying && m_pIdentifyThread)
        emit emitTold(m_identifyWords.of(m_pIdentifyThread->status(), m_pIdentifyThread->hasKey()));
    endIdentification();
}

void MusicDetailedInfoWidget::SlotReceiveIdentifyCover(const QString& path)
{
    if (isStale(sender()))
        return;
    takeNewCover(path, CoverOrigin::Identified);
}

void MusicDetailedInfoWidget::SlotOnFailIdentifyTips()
{
    if (isStale(sender()))
        return;
    const auto* worker = qobject_cast<IdentifyThread*>(sender());
    endIdentification();
    m_bIdentifyFailed = true;
    // Who cancelled knows.
    if (worker && worker->isCancelled())
        return;
    emit emitTold(
        m_identifyWords.of(worker ? worker->status() : IDENTIFY_NOT_RUN, worker && worker->hasKey()));
    MessageDialog::notify(QStringLiteral("Identify failed! You can edit the music information manually."),
                          "button_ok.png");
}

void MusicDetailedInfoWidget::SlotChangeImage()
{
    const QMusicInfo* const song = m_pMusicInfo; // only compared: a mode switch may take it meanwhile
    const QString chosen = QFileDialog::getOpenFileName(
        this, QStringLiteral("Open File"), QStandardPaths::writableLocation(QStandardPaths::PicturesLocation),
        QStringLiteral("Images(*.png *.xpm *.jpg)"));
    if (chosen.isEmpty() || !song || m_pMusicInfo != song)
        return;
    const CoverChoice::Choice choice = CoverChoice::embeddable(chosen, SongEditing::largestCover(*song));
    if (choice.path.isEmpty())
        emit emitTold({FootLines::coverNotTaken(QFileInfo(chosen).fileName(), choice.reason), true, {}});
    else
        takeNewCover(choice.path, CoverOrigin::Chosen);
}

SongEdit MusicDetailedInfoWidget::editedSong() const
{
    SongEdit edit = m_editors->edit();
    edit.newCoverPath = m_strNewCoverPath;
    edit.coverKept = isOwnCoverKept();
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
        m_strNewCoverPath.clear();
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
