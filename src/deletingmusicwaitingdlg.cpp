#include "deletingmusicwaitingdlg.h"

#include "common/compositing.h"
#include "common/skinmovie.h"
#include "common/style.h"
#include "launcherprogress.h"
#include "ui_deletingmusicwaitingdlg.h"

#include <QPainter>

namespace {
constexpr int cardMargin = 48;
constexpr int captionHeight = 44;
constexpr int cornerRadius = 10;
} // namespace

DeletingMusicWaitingDlg::DeletingMusicWaitingDlg(QWidget* parent)
    : QImageDialog(parent, Qt::Dialog | Qt::FramelessWindowHint),
      ui(std::make_unique<Ui::DeletingMusicWaitingDlg>())
{
    setWork(QStringLiteral("Deleting…"));
    ui->setupUi(this);
    setWindowTitle(QStringLiteral("Melodrift"));
    setAttribute(Qt::WA_TranslucentBackground);
    setFixedSize(size());
    ui->m_labMovie->show();
    ui->m_labMovie->move(width() / 2, height() / 2);
    m_pMovie = std::make_unique<SkinMovie>("deletingMusic.gif");
    m_pMovie->startIn(ui->m_labMovie);
    Compositing::cutWhereNeeded(*this, Compositing::rounded(card(), cornerRadius));
}

DeletingMusicWaitingDlg::~DeletingMusicWaitingDlg() = default;

QRect DeletingMusicWaitingDlg::card() const
{
    return ui->m_labMovie->geometry().adjusted(-cardMargin, -cardMargin / 3, cardMargin, captionHeight);
}

void DeletingMusicWaitingDlg::finish()
{
    m_bFinished = true;
    m_pMovie->stop();
    LauncherProgress::end();
    close();
}

void DeletingMusicWaitingDlg::setWork(const QString& doing)
{
    m_strWork = doing;
    m_strProgress = doing;
    update();
}

void DeletingMusicWaitingDlg::showProgress(int done, int total)
{
    m_strProgress = QStringLiteral("%1 %2 of %3").arg(m_strWork).arg(done).arg(total);
    LauncherProgress::show(done, total);
    update();
}

void DeletingMusicWaitingDlg::reject()
{
    // Escape and the window system's close end here, too.
    if (m_bFinished)
        QImageDialog::reject();
}

void DeletingMusicWaitingDlg::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    // A cut window shows pixels whole that the smooth outline covers in part.
    if (!mask().isEmpty())
        painter.fillRect(card(), Style::outline);
    painter.setPen(Style::outline);
    painter.setBrush(Qt::white);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.drawRoundedRect(QRectF(card()).adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius, cornerRadius);
    painter.setPen(Style::text);
    painter.setFont(Style::font(12));
    painter.drawText(card().adjusted(4, card().height() - captionHeight, -4, 0), Qt::AlignCenter,
                     m_strProgress);
}
