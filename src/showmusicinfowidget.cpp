#include "showmusicinfowidget.h"

#include "common/compositing.h"
#include "common/screenplace.h"
#include "common/style.h"
#include "songs/songcover.h"
#include "songs/songfields.h"
#include "ui_showmusicinfowidget.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPainter>

ShowMusicInfoWidget::ShowMusicInfoWidget(QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::ShowMusicInfoWidget>())
{
    ui->setupUi(this);
    setWindowTitle(QStringLiteral("Melodrift"));
    setWindowFlags(Qt::Dialog | Qt::FramelessWindowHint);
    setAttribute(Qt::WA_TranslucentBackground);
    Init();
}

ShowMusicInfoWidget::~ShowMusicInfoWidget() = default;

void ShowMusicInfoWidget::Init()
{
    ui->m_coverWidget->SetImageBackgroud(SkinPicture::path("bg_no_picture.png"), true);
    m_face = std::make_unique<SkinPicture>(SkinPicture::path("bg_music_detail.png"));
    // Around the face the picture is a soft shadow.
    Compositing::cutWhereNeeded(*this, Compositing::solidPart(m_face->image(1)));
    // The cover hears presses for its own signal; here they belong to the card.
    ui->m_coverWidget->setAttribute(Qt::WA_TransparentForMouseEvents);
}

void ShowMusicInfoWidget::setMusicInfo(QMusicInfo* song)
{
    setAccessibleName(QStringLiteral("About ") + SongFields::shownName(song));
    ui->m_coverWidget->SetImageBackgroud(SongCover::shownPath(song), true);
    ui->m_labName->setText(SongFields::title(song));
    ui->m_labArtist->setText(SongFields::artist(song));
    ui->m_labAlbum->setText(SongFields::album(song));
    ui->m_labGenre->setText(SongFields::genre(song));
    ui->m_labYear->setText(QStringLiteral("%1").arg(SongFields::year(song)));
    ui->m_labTrack->setText(QStringLiteral("%1").arg(SongFields::trackNumber(song)));
}

void ShowMusicInfoWidget::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    // A cut window shows pixels whole that the smooth outline covers in part.
    if (!mask().isEmpty())
        painter.fillRect(rect(), Style::outline);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(QPointF(0, 0), m_face->image(painter));
}

void ShowMusicInfoWidget::mousePressEvent(QMouseEvent*)
{
    close();
}

void ShowMusicInfoWidget::showAt(const QPoint& topLeft, const QPoint& onScreen)
{
    move(ScreenPlace::inside(QRect(topLeft, size()), ScreenPlace::availableAt(onScreen)));
    activateWindow();
    show();
}

/// While it shows it hears everything, since the window system may have made it the active window or not.
void ShowMusicInfoWidget::showEvent(QShowEvent* event)
{
    qApp->installEventFilter(this);
    QWidget::showEvent(event);
}

void ShowMusicInfoWidget::hideEvent(QHideEvent* event)
{
    qApp->removeEventFilter(this);
    QWidget::hideEvent(event);
}

bool ShowMusicInfoWidget::eventFilter(QObject* watched, QEvent* event)
{
    const auto* const widget = qobject_cast<QWidget*>(watched);
    const QEvent::Type type = event->type();
    const bool pressedElsewhere = type == QEvent::MouseButtonPress && widget && widget->window() != this;
    const bool gone = type == QEvent::Hide && watched == parent();
    const bool escape = type == QEvent::KeyPress && widget && !QApplication::activeModalWidget() &&
                        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape;
    if (pressedElsewhere || gone || escape)
        close();
    return escape;
}
