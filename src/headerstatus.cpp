#include "headerstatus.h"

#include "common/skinlabel.h"
#include "common/skinmovie.h"
#include "common/style.h"

namespace {
constexpr int tipsIndent = 6; // off the status disc
constexpr int tipsGap = 6;    // to what comes behind them
constexpr qreal closestLetters = 92;

/// Oddity 12: these blanks, here and below.
QString iTunesTips()
{
    return QStringLiteral("Quickly Clean iTunes Music Library,No Unknown and Duplicate Music Anymore!\n"
                          "Click Start Scan button to start tidying your iTunes Music Library immediately.");
}

QString localTips()
{
    return QStringLiteral("Quickly Clean Local Music.No Unknown and Duplicate Music Anymore!\n"
                          "Add music files and start tidying your local music now!");
}
} // namespace

HeaderStatus::HeaderStatus(const Widgets& widgets) : m_widgets(widgets)
{
    m_widgets.disc.setGeometry(10, 20, 50, 50);
    m_widgets.tips.setIndent(tipsIndent);
    QPalette palette = m_widgets.tips.palette();
    palette.setColor(QPalette::WindowText, Qt::black);
    m_widgets.tips.setPalette(palette);
}

HeaderStatus::~HeaderStatus() = default;

void HeaderStatus::showStart(bool local)
{
    showPicture("pic_startscan.png");
    say(local ? localTips() : iTunesTips());
}

void HeaderStatus::showScanning()
{
    m_pScanMovie = std::make_unique<SkinMovie>("dynamic_scanning.gif");
    m_pScanMovie->startIn(&m_widgets.disc);
    say(QStringLiteral("Scanning......\nPlease wait a moment!"));
}

void HeaderStatus::endScanning()
{
    m_pScanMovie.reset();
}

void HeaderStatus::showScanned(int undefined, int duplicates)
{
    showPicture("pic_scanover.png");
    say(QStringLiteral("Scan Finished!\nScan Results: %1 Undefined Song(s); %2 Duplicate Song(s).")
            .arg(undefined)
            .arg(duplicates));
}

void HeaderStatus::showAdding(int done, int total)
{
    if (!m_pAddingMovie) {
        m_strTipsBeforeAdding = m_widgets.tips.text();
        m_pAddingMovie = std::make_unique<SkinMovie>("dynamic_scanning.gif");
        m_pAddingMovie->startIn(&m_widgets.disc);
    }
    say(QStringLiteral("Adding music files: %1 of %2\nPress Esc to stop.").arg(done).arg(total));
}

void HeaderStatus::endAdding()
{
    if (!m_pAddingMovie)
        return;
    showPicture(m_pPicture);
    say(m_strTipsBeforeAdding);
    m_pAddingMovie.reset();
}

void HeaderStatus::showPicture(const char* name)
{
    m_pPicture = name;
    m_widgets.disc.showPicture(SkinPicture::path(name));
}

void HeaderStatus::say(const QString& tips)
{
    m_widgets.tips.setText(tips);
    fitTips();
}

void HeaderStatus::place()
{
    m_widgets.tips.setGeometry(60, 25, 465, 40);
}

void HeaderStatus::fitTips()
{
    m_widgets.tips.setFont(tipsFont());
}

/// In a small window the letters stand closer.
QFont HeaderStatus::tipsFont() const
{
    QFont font = Style::font(12);
    const QFontMetricsF metrics(font);
    qreal widest = 0;
    for (const QString& line : m_widgets.tips.text().split(QLatin1Char('\n')))
        widest = qMax(widest, metrics.horizontalAdvance(line));
    const qreal room = m_widgets.behind.x() - tipsGap - m_widgets.tips.x() - tipsIndent;
    if (widest > room)
        font.setLetterSpacing(QFont::PercentageSpacing, qMax(closestLetters, 100 * room / widest));
    return font;
}
