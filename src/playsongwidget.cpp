#include "playsongwidget.h"

#include "audiocore/iaudioplayer.h"
#include "collection/timetext.h"
#include "common/screenplace.h"
#include "qiorvoutil.h"
#include "songs/footlines.h"
#include "songs/songcover.h"
#include "songs/songfields.h"
#include "ui_playsongwidget.h"

#include <QDebug>
#include <QIcon>
#include <QKeyEvent>
#include <QPainter>
#include <QTimer>
#include <QWindow>

#include <utility>

namespace {
constexpr int updateMilliseconds = 20;
constexpr double sliderRange = 10000.0;
} // namespace

void PlaySongWidget::DestroyPlayerLater::operator()(IAudioPlayer* player) const
{
    DestroyPlayer(player);
}

PlaySongWidget::PlaySongWidget(QWidget* parent)
    : QImageWidget(parent), ui(std::make_unique<Ui::PlaySongWidget>())
{
    setWindowTitle(QStringLiteral("Melodrift"));
    setWindowIcon(SkinPicture::icon("logo.png"));
    setAttribute(Qt::WA_TranslucentBackground);
    // The program ends with its main window, whether or not this one is open.
    setAttribute(Qt::WA_QuitOnClose, false);
    SetImageBackgroud(SkinPicture::path("bg_music_play.png"));
    setWindowFlag(Qt::WindowStaysOnTopHint);
    setWindowFlag(Qt::WindowMaximizeButtonHint, false);
    ui->setupUi(this);
    setWindowTitle(QStringLiteral("Melodrift"));
    ui->m_btnPause->setBtnImage(SkinPicture::path("button_music_stop.png"));
    ui->m_btnPlay->setBtnImage(SkinPicture::path("button_music_play.png"));
    ui->m_musicPlaySlider->setBottomImage(SkinPicture::path("trake_slider.png"));
    ui->m_musicPlaySlider->setTopImage(SkinPicture::path("trake_slider2.png"));
    ui->m_btnPlay->hide();
    ui->m_btnPause->move(20, 315);
    ui->m_btnPlay->move(20, 315);
    ui->m_musicPlaySlider->move(40, 310);
    ui->m_musicPlaySlider->setCircle(true);
    ui->m_musicPlaySlider->setWidth(460);
    ui->m_labelShowTime->move(500, 310);
    // Space is the window's.
    ui->m_btnPause->setFocusPolicy(Qt::NoFocus);
    ui->m_btnPlay->setFocusPolicy(Qt::NoFocus);
    connect(ui->m_btnPause, SIGNAL(clicked()), this, SLOT(SlotOnBtnPause()));
    connect(ui->m_btnPlay, SIGNAL(clicked()), this, SLOT(SlotOnBtnPlay()));
    connect(ui->m_musicPlaySlider, SIGNAL(sendProgressValue(double)), this,
            SLOT(SlotSetMusicPlayProgressValue(double)));
}

PlaySongWidget::~PlaySongWidget() = default;

void PlaySongWidget::SetMusicPlayInfo(QMusicInfo* song, bool fromDupBar)
{
    m_bFromDupBar = fromDupBar;
    showSong(song);
    m_nTotalTime = SongFields::duration(song);
    load(SongFields::audioPath(song));
    showPauseButton(true);
    ui->m_musicPlaySlider->setValue(0);
    startTimer();
}

void PlaySongWidget::showSong(const QMusicInfo* song)
{
    setAccessibleName(QStringLiteral("Playing ") + SongFields::shownName(song));
    ui->m_coverWidget->SetImageBackgroud(SongCover::shownPath(song), true);
    ui->m_labelName->setText(SongFields::artist(song));
    ui->m_labelTitle->setText(SongFields::title(song));
    ui->m_labelKind->setText(SongFields::kind(song));
    ui->m_labelSize->setText(QIOrvoUtil::size2String(SongFields::fileSize(song)));
    // Oddity 6: these letters; a row of a group has others.
    ui->m_labelBitrate->setText(
        QStringLiteral("%1%2").arg(SongFields::bitRateKbps(song)).arg(QLatin1String("Kbps")));
    ui->m_labelSmaple->setText(QStringLiteral("%1KHZ").arg(SongFields::sampleRate(song) / 1000));
    ui->m_labelTime->setText(ConvertTime(qint64(SongFields::duration(song))));
}

void PlaySongWidget::load(const QString& path)
{
    m_pPlayer.reset();
    m_bToldSilent = false;
    m_nToldSecond = -1;
    m_pPlayer.reset(CreatePlayer());
    if (!m_pPlayer)
        return;
    qDebug() << "playing" << path;
    m_pPlayer->Open(path.toStdU32String().c_str());
    m_pPlayer->Seek(0);
    m_pPlayer->Play();
}

void PlaySongWidget::startTimer()
{
    // Oddity 44: one more with every song, and the former ones run on; a tick is cheap.
    auto* timer = new QTimer(this);
    connect(timer, SIGNAL(timeout()), this, SLOT(UpdatePlayTime()));
    timer->start(updateMilliseconds);
}

void PlaySongWidget::showPauseButton(bool pause)
{
    ui->m_btnPause->setVisible(pause);
    ui->m_btnPlay->setVisible(!pause);
}

void PlaySongWidget::PlayMusic()
{
    if (m_pPlayer)
        m_pPlayer->Play();
}

void PlaySongWidget::PauseMusic()
{
    if (m_pPlayer)
        m_pPlayer->Pause();
}

QString PlaySongWidget::ConvertTime(long long milliseconds) const
{
    return TimeText::convert(milliseconds);
}

void PlaySongWidget::UpdatePlayTime()
{
    if (!m_pPlayer)
        return;
    const int position = m_pPlayer->GetPosition();
    const int duration = m_pPlayer->GetDuration();
    const double played = duration > 0 ? double(position) / duration : 0;
    ui->m_musicPlaySlider->setValue(int(unsigned(qBound(0.0, played, 1.0) * sliderRange)));
    ui->m_labelShowTime->setText(ConvertTime(position));
    tellTime(position, duration);
    if (!m_bToldSilent && PlayerIsSilent(m_pPlayer.get())) {
        m_bToldSilent = true;
        emit emitTold({FootLines::noSoundDevice(), true, {}});
    }
    if (m_pPlayer->GetState() == PLAYER_STATE_FINISHED)
        MusicDidfinish();
}

/// To those who hear it, once a second.
void PlaySongWidget::tellTime(int position, int duration)
{
    if (std::exchange(m_nToldSecond, position / 1000) != position / 1000)
        ui->m_musicPlaySlider->setAccessibleName(
            QStringLiteral("Position: %1 of %2")
                .arg(TimeText::inWords(position), TimeText::inWords(duration)));
}

void PlaySongWidget::SlotSetMusicPlayProgressValue(double fraction)
{
    if (m_pPlayer)
        m_pPlayer->Seek(quint64(double(m_nTotalTime) * fraction));
    UpdatePlayTime();
}

void PlaySongWidget::MusicDidfinish()
{
    PauseMusic();
    if (m_pPlayer)
        m_pPlayer->Seek(0);
    ui->m_musicPlaySlider->setValue(0);
    showPauseButton(false);
    ui->m_labelShowTime->setText(QStringLiteral("00::00"));
    if (m_bFromDupBar)
        emit emitSongStopBtnHidden();
}

void PlaySongWidget::SlotOnBtnPlay()
{
    showPauseButton(true);
    PlayMusic();
    if (m_bFromDupBar)
        emit emitSongPlayBtnHidden();
}

void PlaySongWidget::SlotOnBtnPause()
{
    showPauseButton(false);
    PauseMusic();
    if (m_bFromDupBar)
        emit emitSongStopBtnHidden();
}

void PlaySongWidget::ShowBeside(const QRect& other, const QVector<QRect>& seen)
{
    if (!m_bPlaced || (isHidden() && isWhereItWasPut()) || !ScreenPlace::graspable(frameGeometry()))
        placeBeside(other, seen);
    show();
    windowHandle()->installEventFilter(this);
    setWindowState(windowState() & ~Qt::WindowMinimized);
    raise();
    update();
}

/// Nobody moved it since, and the window system at most by its frame.
bool PlaySongWidget::isWhereItWasPut() const
{
    constexpr int frame = 40;
    return (pos() - m_ptPlace).manhattanLength() <= frame;
}

void PlaySongWidget::placeBeside(const QRect& other, const QVector<QRect>& seen)
{
    const QRect whole = QRect(QPoint(0, 0), size()).marginsAdded(ScreenPlace::frameAround(*this));
    m_ptPlace =
        ScreenPlace::besideClearOf(seen, other, whole.size(), ScreenPlace::availableAt(other.center()));
    move(m_ptPlace);
    m_bPlaced = true;
    m_bFrameGuessed = !isVisible();
}

bool PlaySongWidget::eventFilter(QObject* watched, QEvent* event)
{
    // What the window system does to a window as it shows it is heard of by then.
    if (m_bFrameGuessed && watched == windowHandle() && event->type() == QEvent::Expose)
        QTimer::singleShot(0, this, &PlaySongWidget::keepFrameInside);
    return QImageWidget::eventFilter(watched, event);
}

void PlaySongWidget::keepFrameInside()
{
    if (!std::exchange(m_bFrameGuessed, false))
        return;
    const QRect frame = windowHandle()->frameGeometry();
    const QPoint place = ScreenPlace::inside(frame, ScreenPlace::availableAt(frame.center()));
    if (place == frame.topLeft())
        return;
    move(place);
    m_ptPlace = place;
}

void PlaySongWidget::closeEvent(QCloseEvent* event)
{
    PauseMusic();
    // The song stays loaded: shown again, the window offers to play on.
    showPauseButton(false);
    if (m_bFromDupBar)
        emit emitSongStopBtnHidden();
    QImageWidget::closeEvent(event);
}

void PlaySongWidget::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        close();
    else if (event->key() != Qt::Key_Space || event->isAutoRepeat())
        QImageWidget::keyPressEvent(event);
    else if (ui->m_btnPause->isHidden())
        SlotOnBtnPlay();
    else
        SlotOnBtnPause();
}

void PlaySongWidget::paintEvent(QPaintEvent* event)
{
    // The face has round corners, the window's frame has not.
    QPainter(this).fillRect(rect(), palette().window());
    QImageWidget::paintEvent(event);
}
