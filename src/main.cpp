#include "itunes/itunesmusiclibrary.h"
#include "mainwindow.h"
#include "programwindow.h"
#include "startup.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFileInfo>

namespace {
/// Takes the options over; the files and folders named on the command line, as absolute paths.
QStringList namedPaths(const QApplication& application)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Tidies a music collection."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("paths"),
                                 QStringLiteral("Music files or folders to add in the local clean mode."),
                                 QStringLiteral("[paths...]"));
    const QCommandLineOption library(QStringLiteral("itunes-library"),
                                     QStringLiteral("The iTunes library file to read and edit."),
                                     QStringLiteral("file"));
    parser.addOption(library);
    parser.process(application);
    if (parser.isSet(library))
        setITunesLibraryOption(QFileInfo(parser.value(library)).absoluteFilePath().toUtf8().constData());
    QStringList paths;
    for (const QString& path : parser.positionalArguments())
        paths.append(QFileInfo(path).absoluteFilePath());
    return paths;
}
} // namespace

int main(int argc, char* argv[])
{
    Startup::beforeApplication();
    QApplication application(argc, argv);
    Startup::afterApplication();
    const QStringList paths = namedPaths(application);

    const std::unique_ptr<MainWindow> window = makeProgramWindow();
    window->show();
    if (!paths.isEmpty())
        window->OpenInLocalMode(paths);
    return QApplication::exec();
}
