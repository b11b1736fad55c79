#include "program.h"

#include "commandline.h"
#include "endingsignals.h"
#include "itunes/itunesmusiclibrary.h"
#include "mainwindow.h"
#include "programwindow.h"
#include "startup.h"

#include <QApplication>

namespace {
int runApplication(int argc, char* argv[], const CommandLine& commandLine)
{
    QApplication application(argc, argv);
    Startup::afterApplication();

    const std::unique_ptr<MainWindow> window = makeProgramWindow();
    const EndingSignals endingSignals;
    QObject::connect(&endingSignals, &EndingSignals::arrived, window.get(), [&window] {
        window->close();
        QApplication::quit(); // which also ends the dialogs that are open
    });
    window->show();
    if (commandLine.isLocal)
        window->OpenInLocalMode(commandLine.paths);
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
    const int exitCode = runApplication(argc, argv, commandLine);
    Startup::removeTemporaryFiles();
    return EndingSignals::passOn(exitCode);
}
