#include "musicdetailedinfowidget.h"

#include "audiocore/tagitem.h"
#include "common/messagedialog.h"
#include "common/skinmovie.h"
#include "common/style.h"
#include "common/workers.h"
#include "covers/coverchoice.h"
#include "identifythread.h"
#include "keepoffers.h"
#include "loadplayerthread.h"
#include "songs/songcover.h"
#include "songs/songfields.h"
#include "ui_musicdetailedinfowidget.h"

#include <QFileDialog>
#include <QIntValidator>
#include <QKeyEvent>
#include <QPainter>
#include <QStandardPaths>

#include <limits>

namespace {
QString numberText(quint64 number)
{
    return QStringLiteral("%1").arg(number);
}
} // namespace

MusicDetailedInfoWidget::MusicDetailedInfoWidget(QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::MusicDetailedInfoWidget>()),
      m_face(SkinPicture::path("bg_right.png"))
{
    ui->setupUi(this);
    InitBtn();
    InitEditors();
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
}

void MusicDetailedInfoWidget::InitEditors()
{
    const QFont font = Style::font(10);
    // As tall as the label below it, looking less so.
    const QString look = QStringLiteral("QLineEdit{margin:4px 0;padding:0 5px;border:1px solid %1;"
                                        "border-radius:4px;background:white;color:%2}"
                                        "QLineEdit:focus{border-color:%3}")
                             .arg(Style::editorLine.name(), Style::ink.name(), Style::editorFocus.name());
    for (QLineEdit* editor : findChildren<QLineEdit*>()) {
        editor->setFont(font);
        editor->setStyleSheet(look);
    }
    ui->m_comboGenre->setFont(font);
    ui->gridLayoutWidget->setStyleSheet(QStringLiteral("QComboBox{padding-left:5px}"));
    // A text is handed back as long as it is.
    for (QLineEdit* editor : {ui->m_lineTitle, ui->m_lineArtist, ui->m_lineAlbum})
        editor->setMaxLength(std::numeric_limits<int>::max());
    auto* validator = new QIntValidator(1, 9999, this);
    ui->m_lineYear->setValidator(validator);
    ui->m_lineTrackNo->setValidator(validator);
    m_genreList = SongEditing::genres();
    ui->m_comboGenre->addItems(m_genreList);
    ui->m_comboGenre->setStyleSheet(QStringLiteral(
        "QComboBox{background-color:rgb(154,219,251);margin:2px;}"
        "QComboBox:item{background-color:white;color:rgb(122,190,204);font-weight:2px;margin:1px;"
        "height:25px;width:80px;padding-left:40px;}"
        "QComboBox:item:selected{background-color:rgb(212,240,247);}QMenu:icon{left:20px;height:20px}"));
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

void MusicDetailedInfoWidget::ShowMusicInfo()
{
    showCover(SongCover::shownPath(m_pMusicInfo));
    const bool own = !m_bNewSong;
    ui->m_titleName->setText(own ? m_strShownTitle : SongFields::title(m_pMusicInfo));
    ui->m_artistName->setText(own ? m_strShownArtist : SongFields::artist(m_pMusicInfo));
    ui->m_albumName->setText(own ? m_strShownAlbum : SongFields::album(m_pMusicInfo));
    ui->m_genreName->setText(own ? m_strShownGenre : SongFields::genre(m_pMusicInfo));
    ui->m_yearNumber->setText(own ? m_strShownYear : numberText(SongFields::year(m_pMusicInfo)));
    ui->m_trackNoName->setText(own ? m_strShownTrackNo : numberText(SongFields::trackNumber(m_pMusicInfo)));
    m_bNewSong = false;
    showButtons(false);
    SetTextLabelAndLineState();
    ui->currentImgWidget->setEnabled(false);
    show();
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
    for (QLineEdit* editor : findChildren<QLineEdit*>())
        editor->hide();
    ui->m_comboGenre->hide();
}

void MusicDetailedInfoWidget::SetTextLabelAndLineState()
{
    HiddenLineEdit();
    for (RetractLabel* label : findChildren<RetractLabel*>())
        label->show();
}

bool MusicDetailedInfoWidget::isEditing() const
{
    return !ui->m_btnApply->isHidden();
}

void MusicDetailedInfoWidget::SlotOnBtnEdit()
{
    m_bIdentifyFailed = false;
    ui->m_lineTitle->setText(SongFields::title(m_pMusicInfo));
    ui->m_lineArtist->setText(SongFields::artist(m_pMusicInfo));
    ui->m_lineAlbum->setText(SongFields::album(m_pMusicInfo));
    ui->m_lineYear->setText(numberText(SongFields::year(m_pMusicInfo)));
    ui->m_lineTrackNo->setText(numberText(SongFields::trackNumber(m_pMusicInfo)));
    // Oddity 36: a genre out of the list leaves the selection as it was; an apply writes that one.
    const int genre = m_genreList.indexOf(SongFields::genre(m_pMusicInfo));
    if (genre >= 0)
        ui->m_comboGenre->setCurrentIndex(genre);
    m_nGenreBefore = ui->m_comboGenre->currentIndex();
    for (RetractLabel* label : findChildren<RetractLabel*>())
        label->hide();
    for (QLineEdit* editor : findChildren<QLineEdit*>()) {
        editor->setCursorPosition(0);
        editor->show();
    }
    ui->m_comboGenre->show();
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
            fillEditor(element.at(0), element.mid(1));
    m_bIdentified = true;
    endIdentification();
}

void MusicDetailedInfoWidget::fillEditor(QChar type, const QString& value)
{
    QLineEdit* const editors[] = {ui->m_lineTitle, ui->m_lineArtist, ui->m_lineAlbum,
                                  nullptr,         ui->m_lineYear,   ui->m_lineTrackNo};
    const int index = type.digitValue();
    if (index == TAG_GENRE) {
        const int genre = m_genreList.indexOf(value);
        ui->m_comboGenre->setCurrentIndex(genre >= 0 ? genre : m_genreList.size() - 1); // the last is "Other"
    } else if (index >= TAG_TITLE && index <= TAG_TRACK) {
        editors[index]->setText(value);
        editors[index]->setCursorPosition(0);
    }
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
    if (!worker || !worker->isCancelled())
        MessageDialog::notify(QStringLiteral("Identify failed! You can edit the music information manually."),
                              "button_ok.png");
}

void MusicDetailedInfoWidget::SlotChangeImage()
{
    const QMusicInfo* const song = m_pMusicInfo; // only compared: a mode switch may take it meanwhile
    const QString chosen = QFileDialog::getOpenFileName(
        this, QStringLiteral("Open File"), QStandardPaths::writableLocation(QStandardPaths::PicturesLocation),
        QStringLiteral("Images(*.png *.xpm *.jpg)"));
    if (chosen.isEmpty() || m_pMusicInfo != song)
        return;
    const QString path = CoverChoice::embeddable(chosen);
    if (path.isEmpty())
        return;
    takeNewCover(path, CoverOrigin::Chosen);
}

void MusicDetailedInfoWidget::cacheEditorTexts()
{
    m_strShownTitle = ui->m_lineTitle->text();
    m_strShownArtist = ui->m_lineArtist->text();
    m_strShownAlbum = ui->m_lineAlbum->text();
    m_strShownGenre = ui->m_comboGenre->currentText();
    m_strShownYear = ui->m_lineYear->text();
    m_strShownTrackNo = ui->m_lineTrackNo->text();
}

SongEdit MusicDetailedInfoWidget::editedSong() const
{
    SongEdit edit;
    edit.title = m_strShownTitle;
    edit.artist = m_strShownArtist;
    edit.album = m_strShownAlbum;
    edit.genre = m_strShownGenre;
    edit.year = m_strShownYear.toInt();
    edit.trackNumber = m_strShownTrackNo.toInt();
    edit.newCoverPath = m_strNewCoverPath;
    edit.coverKept = isOwnCoverKept();
    return edit;
}

void MusicDetailedInfoWidget::SlotOnBtnApply()
{
    if (!m_pMusicInfo)
        return;
    cacheEditorTexts();
    const SongEditing::Outcome outcome = SongEditing::apply(*m_pMusicInfo, editedSong());
    if (outcome.coverChanged)
        emit emitMusicCoverHasChanged();
    if (outcome.coverUsed)
        m_strNewCoverPath.clear();
    ShowMusicInfo();
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
    if (!isEditing() || (!enter && event->key() != Qt::Key_Escape)) {
        QWidget::keyPressEvent(event);
        return;
    }
    if (!enter || ui->m_btnCancel->hasFocus())
        SlotOnBtnCancel();
    else if (ui->m_btnApply->isEnabled() && (!m_bIdentifyFailed || isInChangedEditor()))
        SlotOnBtnApply();
}

bool MusicDetailedInfoWidget::isInChangedEditor() const
{
    if (const auto* editor = qobject_cast<QLineEdit*>(focusWidget()))
        return editor->isModified();
    return ui->m_comboGenre->hasFocus() && ui->m_comboGenre->currentIndex() != m_nGenreBefore;
}

void MusicDetailedInfoWidget::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    // Where the face ends its flat colour goes on.
    painter.fillRect(rect(), Style::panel);
    painter.fillRect(0, 0, 1, height(), Style::line);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(QPointF(0, 0), m_face.image(painter));
    const QRect fields = ui->gridLayoutWidget->geometry();
    const int rows = ui->m_gridLayout->rowCount();
    for (int row = 1; row <= rows; ++row)
        painter.fillRect(fields.x() + 8, fields.y() + fields.height() * row / rows - 1, fields.width() - 16,
                         1, Style::fieldLine);
}
