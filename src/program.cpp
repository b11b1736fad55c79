#include "program.h"

#include "commandline.h"
#include "endingsignals.h"
#include "itunes/itunesmusiclibrary.h"
#include "mainwindow.h"
#include "qiorvoutil.h"
#include "startup.h"

#include <QApplication>
#include <QDesktopWidget>
#include <QIcon>

namespace {
int runApplication(int argc, char* argv[], const QStringList& paths)
{
    QApplication application(argc, argv);
    Startup::afterApplication();

    MainWindow window;
    const QString resources = QIOrvoUtil::getResourcePath();
    QApplication::setWindowIcon(QIcon(resources + QLatin1String("/Image/logo.png")));
    window.setTopImage(resources + QLatin1String("/Image/bg_banner.png"));
    window.setFootImage(resources + QLatin1String("/Image/bg_foot.png"));
    window.setBackgroundImage(resources + QLatin1String("/Image/bg_right_nofile.png"));
    const QRect desktop = QApplication::desktop()->geometry();
    window.move((desktop.width() - window.width()) / 2, (desktop.height() - window.height()) / 2);
    window.setMinimumHeight(700);
    window.setMinimumWidth(1000);
    const EndingSignals endingSignals;
    QObject::connect(&endingSignals, &EndingSignals::arrived, &window, [&window] {
        window.close();
        QApplication::quit(); // which also ends the dialogs that are open
    });
    window.show();
    if (!paths.isEmpty())
        window.OpenInLocalMode(paths);
    return QApplication::exec();
}
} // namespace

int runProgram(int argc, char* argv[])
{
    Startup::beforeCommandLine();
    const CommandLine commandLine = CommandLine::read(argc, argv);
    if (commandLine.isAnswered)
        return commandLine.exitCode;
    if (!commandLine.library.isEmpty())
        setITunesLibraryOption(commandLine.library.toUtf8().constData());
    EndingSignals::hold();
    Startup::beforeApplication();
    const int exitCode = runApplication(argc, argv, commandLine.paths);
    Startup::removeTemporaryFiles();
    return EndingSignals::passOn(exitCode);
}
