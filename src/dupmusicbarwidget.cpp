#include "dupmusicbarwidget.h"

#include "collection/timetext.h"
#include "common/keyuse.h"
#include "common/screenreader.h"
#include "common/skinlabel.h"
#include "common/style.h"
#include "common/textfit.h"
#include "folderopener.h"
#include "qiorvoutil.h"
#include "showmusicinfowidget.h"
#include "songs/songfields.h"
#include "songs/songtip.h"
#include "songs/spokenwords.h"
#include "ui_dupmusicbarwidget.h"

#include <QCursor>
#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

#include <algorithm>

namespace {
constexpr int cardLeftOfPointer = 300;
constexpr int bestMarkSide = 14;
constexpr int bestMarkGap = 5;
constexpr int atHandWidth = 6;

/// Not by style sheets, which cost a group of thousands of rows seconds.
void showLabel(RetractLabel* label, const QColor& colour, const QPoint& place)
{
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, colour);
    label->setPalette(palette);
    label->move(place);
}

void showButton(QImageButton* button, const char* picture, const QPoint& place)
{
    button->setBtnImage(SkinPicture::path(picture));
    button->move(place);
}
} // namespace

DupMusicbarWidget::DupMusicbarWidget(QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::DupMusicbarWidget>())
{
    ui->setupUi(this);
    ScreenReader::setRole(*this, QAccessible::ListItem);
    InitButtons();
    showLabel(ui->m_labelMusicName, Style::ink, QPoint(38, 7));
    showLabel(ui->m_labelMusicArtist, Style::text, QPoint(38, 37));
    showLabel(ui->m_labelMusicKbps, Style::muted, QPoint(38, 62));
    showLabel(ui->m_labelMusicFormat, Style::muted, QPoint(130, 62));
    showLabel(ui->m_labelTotalTime, Style::muted, QPoint(265, 8));
    connect(ui->m_btnIsDeleta, SIGNAL(clicked()), this, SLOT(SlotOnBtnCheckBox()));
    connect(ui->m_btnPlayMusic, SIGNAL(clicked()), this, SLOT(SlotOnBtnPlay()));
    connect(ui->m_btnStopMusic, SIGNAL(clicked()), this, SLOT(SlotOnBtnPause()));
    connect(ui->m_btnOpenPath, SIGNAL(clicked()), this, SLOT(SlotOnBtnOpenPath()));
    connect(ui->m_btnShowInfo, SIGNAL(clicked()), this, SLOT(SlotOnBtnShowInfo()));
}

DupMusicbarWidget::~DupMusicbarWidget() = default;

void DupMusicbarWidget::InitButtons()
{
    showButton(ui->m_btnPlayMusic, "button_play.png", QPoint(230, 67));
    showButton(ui->m_btnShowInfo, "button_detail.png", QPoint(260, 67));
    showButton(ui->m_btnOpenPath, "button_search.png", QPoint(290, 67));
    // The smaller stop mark stands in the middle of the play button's place.
    showButton(ui->m_btnStopMusic, "button_music_stop.png", QPoint(236, 73));
    ui->m_btnIsDeleta->setBtnImage(SkinPicture::path("btn_checkbox_no.png"));
    ui->m_btnStopMusic->hide();
}

void DupMusicbarWidget::SetDupMusicInfo(QMusicInfo* song)
{
    if (song)
        m_pMusicInfo = song;
    ui->m_labelMusicName->setText(SongFields::title(m_pMusicInfo));
    ui->m_labelMusicArtist->setText(SongFields::artist(m_pMusicInfo));
    ui->m_labelMusicKbps->setText(
        QStringLiteral("%1%2").arg(SongFields::bitRateKbps(m_pMusicInfo)).arg(QLatin1String("kbps")));
    ui->m_labelTotalTime->setText(ConvertTime(qint64(SongFields::duration(m_pMusicInfo))));
    // Oddity 10: in the iTunes mode the label keeps the form's text, whatever the file is.
    if (QIOrvoUtil::m_cleanMode && SongFields::available(m_pMusicInfo))
        ui->m_labelMusicFormat->setText(SongFields::kind(m_pMusicInfo));
    tellState();
}

/// To those who hear it.
void DupMusicbarWidget::tellState()
{
    const bool best = m_pBestMark && !m_pBestMark->isHidden();
    setAccessibleName(SpokenWords::ofCopy(m_pMusicInfo, ui->m_labelMusicFormat->getName(), m_bChecked, best));
}

QString DupMusicbarWidget::ConvertTime(long long milliseconds) const
{
    return TimeText::convert(milliseconds);
}

void DupMusicbarWidget::SetBtnPauseHidden()
{
    ui->m_btnStopMusic->hide();
    ui->m_btnPlayMusic->show();
}

void DupMusicbarWidget::SetBtnPlayHidden()
{
    ui->m_btnStopMusic->show();
    ui->m_btnPlayMusic->hide();
}

void DupMusicbarWidget::setBest(bool best)
{
    if (best && !m_pBestMark)
        makeBestMark();
    if (m_pBestMark)
        m_pBestMark->setVisible(best);
    tellState();
}

void DupMusicbarWidget::setAtHand(bool atHand)
{
    m_bAtHand = atHand;
    update();
}

/// The last one first, which finds the one before it at once.
void DupMusicbarWidget::putInTabOrder(QWidget* former)
{
    for (QWidget* button :
         {ui->m_btnOpenPath, ui->m_btnShowInfo, ui->m_btnStopMusic, ui->m_btnPlayMusic, ui->m_btnIsDeleta})
        setTabOrder(former, button);
}

void DupMusicbarWidget::makeBestMark()
{
    m_pBestMark = new SkinLabel(this);
    m_pBestMark->setObjectName(QStringLiteral("m_labelBest"));
    m_pBestMark->showPicture(SkinPicture::path("pic_best.png"));
    m_pBestMark->setToolTip(QStringLiteral("Best sound of this group"));
    m_pBestMark->setAccessibleName(m_pBestMark->toolTip());
    m_pBestMark->resize(bestMarkSide, bestMarkSide);
    const RetractLabel* const bitRate = ui->m_labelMusicKbps;
    const QRect place = bitRate->geometry();
    const int behind = place.left() + bitRate->fontMetrics().horizontalAdvance(bitRate->text()) + bestMarkGap;
    m_pBestMark->move(std::min(behind, place.right() - bestMarkSide),
                      place.top() + (place.height() - bestMarkSide) / 2);
}

void DupMusicbarWidget::SlotOnBtnCheckBox()
{
    ui->m_btnIsDeleta->setBtnImage(
        SkinPicture::path(m_bChecked ? "btn_checkbox_no.png" : "btn_checkbox_yes.png"));
    m_bChecked = !m_bChecked;
    tellState();
    update();
}

void DupMusicbarWidget::SlotOnBtnPlay()
{
    SetBtnPlayHidden();
    emit emitStartPlaySong(m_pMusicInfo);
}

void DupMusicbarWidget::SlotOnBtnPause()
{
    SetBtnPauseHidden();
    emit emitStopSong();
}

void DupMusicbarWidget::SlotOnBtnOpenPath()
{
    const FootText told = FolderOpener::show(SongFields::location(m_pMusicInfo));
    if (!told.text.isEmpty())
        emit emitTold(told);
}

void DupMusicbarWidget::SlotOnBtnShowInfo()
{
    showCard(QCursor::pos());
}

QPoint DupMusicbarWidget::cardPlace() const
{
    return ui->m_btnShowInfo->mapToGlobal(ui->m_btnShowInfo->rect().center());
}

void DupMusicbarWidget::showCard(const QPoint& pointer)
{
    m_pShowInfoWidget = std::make_unique<ShowMusicInfoWidget>(this);
    m_pShowInfoWidget->setMusicInfo(m_pMusicInfo);
    m_ptCursor = {pointer.x(), pointer.y()};
    m_pShowInfoWidget->showAt(pointer - QPoint(cardLeftOfPointer, 0), pointer);
}

/// The tip is made when it is asked for.
bool DupMusicbarWidget::event(QEvent* event)
{
    if (event->type() != QEvent::ToolTip || !SongFields::available(m_pMusicInfo))
        return QWidget::event(event);
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), TextFit::tip(SongTip::of(m_pMusicInfo)),
                       this);
    return true;
}

void DupMusicbarWidget::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), Style::groupRow);
    painter.fillRect(0, height() - 1, width(), 1, Style::divider);
    if (m_bAtHand && KeyUse::instance().leads())
        painter.fillRect(0, 0, atHandWidth, height() - 1, Style::markChosen);
}
