#include "dupmusicbarwidget.h"

#include "qiorvoutil.h"
#include "qmusicinfo.h"
#include "songfields.h"
#include "timetext.h"
#include "ui_dupmusicbarwidget.h"

#include <QPainter>

DupMusicbarWidget::DupMusicbarWidget(QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::DupMusicbarWidget>())
{
    ui->setupUi(this);
}

DupMusicbarWidget::~DupMusicbarWidget() = default;

void DupMusicbarWidget::SetDupMusicInfo(QMusicInfo* song)
{
    if (song)
        m_pMusicInfo = song;
    ui->m_labelMusicName->setText(SongFields::title(m_pMusicInfo));
    ui->m_labelMusicArtist->setText(SongFields::artist(m_pMusicInfo));
    ui->m_labelMusicKbps->setText(
        QStringLiteral("%1%2").arg(SongFields::bitRateKbps(m_pMusicInfo)).arg(QLatin1String("kbps")));
    ui->m_labelTotalTime->setText(TimeText::convert(qint64(SongFields::duration(m_pMusicInfo))));
    // In the iTunes mode the label keeps the form's text, whatever the file is.
    if (QIOrvoUtil::m_cleanMode && SongFields::available(m_pMusicInfo))
        ui->m_labelMusicFormat->setText(m_pMusicInfo->localInfo->format);
}

void DupMusicbarWidget::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), QColor(231, 247, 255));
    painter.fillRect(0, height() - 1, width(), 1, QColor(170, 170, 170));
}
