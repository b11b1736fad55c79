#include "musicdetailedinfowidget.h"

#include "coverloader.h"
#include "qiorvoutil.h"
#include "songfields.h"
#include "ui_musicdetailedinfowidget.h"

#include <QPainter>

MusicDetailedInfoWidget::MusicDetailedInfoWidget(QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::MusicDetailedInfoWidget>()),
      m_face(SkinPicture::path("bg_right.png"))
{
    ui->setupUi(this);
    ui->currentImgWidget->SetImageBackgroud(SkinPicture::path("bg_no_picture.png"), true);
}

MusicDetailedInfoWidget::~MusicDetailedInfoWidget() = default;

void MusicDetailedInfoWidget::SetMusicDetailedInfo(QMusicInfo* song)
{
    m_pMusicInfo = song;
    if (song)
        ShowMusicInfo();
    else
        hide();
}

void MusicDetailedInfoWidget::ShowMusicInfo()
{
    QString cover = SongFields::coverPath(m_pMusicInfo);
    if (!QIOrvoUtil::isImage(cover))
        cover = CoverLoader::genericCoverPath();
    ui->currentImgWidget->SetImageBackgroud(cover, true);
    ui->m_titleName->setText(SongFields::title(m_pMusicInfo));
    ui->m_artistName->setText(SongFields::artist(m_pMusicInfo));
    ui->m_albumName->setText(SongFields::album(m_pMusicInfo));
    ui->m_genreName->setText(SongFields::genre(m_pMusicInfo));
    ui->m_yearNumber->setText(QStringLiteral("%1").arg(SongFields::year(m_pMusicInfo)));
    ui->m_trackNoName->setText(QStringLiteral("%1").arg(SongFields::trackNumber(m_pMusicInfo)));
    show();
}

void MusicDetailedInfoWidget::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    // Where the face ends its flat colour goes on.
    painter.fillRect(rect(), QColor(0xF5, 0xFA, 0xFD));
    painter.fillRect(0, 0, 1, height(), QColor(0xC9, 0xDD, 0xE9));
    painter.drawImage(QPointF(0, 0), m_face.image(devicePixelRatioF()));
}
