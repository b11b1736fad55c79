#include "startup.h"

#include "audiocore/log.h"
#include "common/screenreader.h"
#include "common/style.h"
#include "common/workers.h"
#include "desktopscale.h"
#include "dialogparents.h"
#include "ownenvironment.h"
#include "privatefolder.h"

#include <QApplication>
#include <QDir>
#include <QFontDatabase>
#include <QPalette>
#include <QProxyStyle>
#include <QTextCodec>
#include <QToolTip>

#include <clocale>

namespace {
/// There is one for the whole run. As a static object it also goes where a library ends the process, as the
/// one of the display does when that breaks down.
std::unique_ptr<PrivateFolder>& privateFolder()
{
    static std::unique_ptr<PrivateFolder> folder;
    return folder;
}

/// Cover files go to names glued to the temporary path ("…localImage"). The path therefore names a folder
/// inside a private one, so that the glued names lie in the private one, too.
void makeTemporaryFilesPrivate()
{
    if (privateFolder())
        return;
    privateFolder() = std::make_unique<PrivateFolder>(QDir::tempPath());
    const QString home = privateFolder()->path();
    const QString temporary = home + QLatin1String("/tmp");
    if (home.isEmpty() || !QDir().mkpath(temporary))
        return;
    const QByteArray path = QFile::encodeName(QDir::toNativeSeparators(temporary));
#ifdef Q_OS_WIN
    OwnEnvironment::set("TMP", path);
    OwnEnvironment::set("TEMP", path);
#else
    OwnEnvironment::set("TMPDIR", path);
#endif
}

/// The menu bar asks for the picture of a button that ours is too short to show: reading it would load the
/// readers of every picture format.
class SkinStyle : public QProxyStyle
{
public:
    SkinStyle() : QProxyStyle(QStringLiteral("Fusion")) {}
    QIcon standardIcon(StandardPixmap icon, const QStyleOption* option, const QWidget* widget) const override
    {
        return icon == SP_ToolBarHorizontalExtensionButton ? QIcon()
                                                           : QProxyStyle::standardIcon(icon, option, widget);
    }
};

/// The first installed of the families stands in for a missing one.
void substitute(const QString& family, const QStringList& standIns, const QStringList& installed)
{
    if (installed.contains(family))
        return;
    for (const QString& standIn : standIns) {
        if (!installed.contains(standIn))
            continue;
        QFont::insertSubstitution(family, standIn);
        return;
    }
}

void chooseFonts()
{
    const QStringList installed = QFontDatabase().families();
    const QStringList standIns = {QStringLiteral("Open Sans"), QStringLiteral("Verdana"),
                                  QStringLiteral("DejaVu Sans Condensed"), QStringLiteral("DejaVu Sans")};
    substitute(Style::family(), standIns, installed);
    substitute(Style::buttonFamily(), QStringList{QStringLiteral("Helvetica")} + standIns, installed);
    QApplication::setFont(Style::font(12));
    QToolTip::setFont(Style::font(12));
}

void chooseColours()
{
    QApplication::setStyle(new SkinStyle);
    QPalette palette(Style::window);
    palette.setColor(QPalette::Base, Qt::white);
    palette.setColor(QPalette::Highlight, Style::selection);
    palette.setColor(QPalette::HighlightedText, Style::ink);
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Active, role, Style::text);
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Inactive, role, Style::text);
    palette.setColor(QPalette::ToolTipBase, Qt::white);
    palette.setColor(QPalette::ToolTipText, Style::ink);
    QApplication::setPalette(palette);
    QToolTip::setPalette(palette);
}
} // namespace

void Startup::beforeCommandLine()
{
#ifdef Q_OS_UNIX
    // File names are UTF-8 also where no language is set, as in a bare container.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
#endif
    QCoreApplication::setApplicationName(QStringLiteral("Melodrift"));
    QCoreApplication::setApplicationVersion(QStringLiteral(MELODRIFT_VERSION));
}

void Startup::beforeApplication()
{
    beforeCommandLine();
    makeTemporaryFilesPrivate();
    if (const qreal scale = DesktopScale::ofDesktop(); scale > 1)
        OwnEnvironment::set("QT_SCALE_FACTOR", QByteArray::number(scale));
    if (!qEnvironmentVariableIsSet("QT_FONT_DPI")) {
        OwnEnvironment::set("QT_FONT_DPI", "72");
        // Else scaled screens would only ever raise the resolution, back to 96.
        OwnEnvironment::set("QT_DPI_ADJUSTMENT_POLICY", "AdjustDpi");
    }
    // Nothing is drawn by OpenGL, whose libraries take half of the memory at the start.
    if (!qEnvironmentVariableIsSet("QT_XCB_GL_INTEGRATION"))
        OwnEnvironment::set("QT_XCB_GL_INTEGRATION", "none");
    QGuiApplication::setDesktopFileName(QStringLiteral("melodrift"));
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
}

void Startup::removeTemporaryFiles()
{
    privateFolder().reset();
}

void Startup::afterApplication()
{
    // The application object took the user's locale over; number parsers of the audio libraries want the dot.
    std::setlocale(LC_NUMERIC, "C");
    SetAudioCoreLogSink([](const char* line) { qWarning("%s", line); });
    Workers::fillToolkitPool();
    ScreenReader::install();
    DialogParents::keepWhereNothingCanBePlaced();
    chooseFonts();
    chooseColours();
    // The text cursor stands still: a blinking one has its window painted for as long as an editor is open.
    QApplication::setCursorFlashTime(0);
}
