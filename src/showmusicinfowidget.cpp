#include "showmusicinfowidget.h"

#include "common/compositing.h"
#include "common/screenplace.h"
#include "common/style.h"
#include "songs/songcover.h"
#include "songs/songfields.h"
#include "ui_showmusicinfowidget.h"

#include <QAbstractItemView>
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
    if (event->type() == QEvent::KeyPress)
        return widget && takesKey(*widget, *static_cast<QKeyEvent*>(event));
    if (closesAt(*watched, *event))
        close();
    return false;
}

bool ShowMusicInfoWidget::closesAt(const QObject& watched, const QEvent& event) const
{
    const auto* const widget = qobject_cast<const QWidget*>(&watched);
    if (event.type() == QEvent::MouseButtonPress)
        return widget && widget->window() != this;
    if (event.type() != QEvent::Hide)
        return false;
    const bool isView = qobject_cast<const QAbstractItemView*>(&watched) != nullptr;
    return &watched == parent() || (isView && parentWidget() && widget->window() == parentWidget()->window());
}

/// Whether the key goes no further. The one that opened the card may be held.
bool ShowMusicInfoWidget::takesKey(const QWidget& receiver, const QKeyEvent& event)
{
    const bool isModifier = event.key() >= Qt::Key_Shift && event.key() <= Qt::Key_Alt;
    if (isModifier || event.isAutoRepeat() || QApplication::activeModalWidget())
        return false;
    close();
    if (event.key() == Qt::Key_Escape)
        return true;
    if (receiver.window() != this || !parentWidget())
        return false;
    QWidget* const behind = parentWidget()->window();
    behind->activateWindow();
    QKeyEvent same(event);
    QApplication::sendEvent(behind->focusWidget() ? behind->focusWidget() : behind, &same);
    return true;
}
