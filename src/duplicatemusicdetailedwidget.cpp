#include "duplicatemusicdetailedwidget.h"

#include "dupmusicbarwidget.h"
#include "ui_duplicatemusicdetailedwidget.h"

#include <QPainter>

DuplicateMusicDetailedWidget::DuplicateMusicDetailedWidget(QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::DuplicateMusicDetailedWidget>())
{
    ui->setupUi(this);
    ui->scrollArea->viewport()->setAutoFillBackground(false);
    ui->m_scrollAreaWidget->setAutoFillBackground(false);
}

DuplicateMusicDetailedWidget::~DuplicateMusicDetailedWidget() = default;

void DuplicateMusicDetailedWidget::SetDuplicateMusicDetailedInfo(QList<QMusicInfo*>* list)
{
    m_pMusicList = list;
    qDeleteAll(m_listBarWidget);
    m_listBarWidget.clear();
    if (!m_pMusicList)
        return;
    for (QMusicInfo* song : qAsConst(*m_pMusicList)) {
        auto* row = new DupMusicbarWidget(this);
        m_listBarWidget.append(row);
        row->SetDupMusicInfo(song);
        ui->m_ListverticalLayout->addWidget(row);
    }
    show();
}

void DuplicateMusicDetailedWidget::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), Qt::white);
    painter.fillRect(0, 0, 1, height(), QColor(192, 192, 192));
}
