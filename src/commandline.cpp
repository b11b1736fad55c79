#include "commandline.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFileInfo>

#include <cstdio>

namespace {
constexpr int wrongUse = 2;

void say(std::FILE* stream, const QString& text)
{
    std::fputs(text.toLocal8Bit().constData(), stream);
}

/// One line, whatever a path holds.
void complain(QString text)
{
    for (QChar& character : text)
        if (character.category() == QChar::Other_Control)
            character = QLatin1Char('?');
    say(stderr, QStringLiteral("melodrift: %1\n").arg(text));
}

CommandLine ended(int exitCode)
{
    CommandLine commandLine;
    commandLine.isAnswered = true;
    commandLine.exitCode = exitCode;
    return commandLine;
}

CommandLine refused(const QString& error)
{
    complain(error);
    return ended(wrongUse);
}

CommandLine answered(const QString& text)
{
    say(stdout, text);
    return ended(0);
}

/// The options that the toolkit takes out of the command line when the application object is made.
void addToolkitOptions(QCommandLineParser& parser)
{
    const auto add = [&parser](const char* name, const QString& value) {
        QCommandLineOption option(QString::fromLatin1(name), QString(), value);
        option.setFlags(QCommandLineOption::HiddenFromHelp);
        parser.addOption(option);
    };
    for (const char* name : {"platform", "platformpluginpath", "platformtheme", "plugin", "qwindowgeometry",
                             "geometry", "qwindowicon", "icon", "qwindowtitle", "title", "session", "display",
                             "name", "style", "stylesheet"})
        add(name, QStringLiteral("value"));
    for (const char* name : {"reverse", "widgetcount", "nograb", "dograb", "sync"})
        add(name, QString());
}

QStringList existing(const QStringList& paths)
{
    QStringList found;
    for (const QString& path : paths) {
        const QFileInfo info(path);
        if (info.exists())
            found.append(info.absoluteFilePath());
        else
            complain(QStringLiteral("no such file or folder: ") + path);
    }
    return found;
}
} // namespace

CommandLine CommandLine::read(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv); // without it no system gives the arguments as texts
    QCommandLineParser parser;
    // As the toolkit takes its own.
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    parser.setApplicationDescription(QStringLiteral("Tidies a music collection."));
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("paths"),
                                 QStringLiteral("Music files or folders to add in the local clean mode."),
                                 QStringLiteral("[paths...]"));
    const QCommandLineOption libraryFile(QStringLiteral("itunes-library"),
                                         QStringLiteral("The iTunes library file to read and edit."),
                                         QStringLiteral("file"));
    const QCommandLineOption localMode(QStringLiteral("local"),
                                       QStringLiteral("Start in the local clean mode, also without paths."));
    parser.addOptions({libraryFile, localMode});
    addToolkitOptions(parser);

    if (!parser.parse(QCoreApplication::arguments()))
        return refused(parser.errorText());
    if (parser.isSet(libraryFile) && parser.value(libraryFile).isEmpty())
        return refused(QStringLiteral("Missing value after '--itunes-library'."));
    if (parser.isSet(help) || parser.isSet(QStringLiteral("help-all")))
        return answered(parser.helpText());
    if (parser.isSet(version))
        return answered(QStringLiteral("%1 %2\n").arg(QCoreApplication::applicationName(),
                                                      QCoreApplication::applicationVersion()));
    CommandLine commandLine;
    if (parser.isSet(libraryFile))
        commandLine.library = QFileInfo(parser.value(libraryFile)).absoluteFilePath();
    commandLine.isLocal = parser.isSet(localMode) || !parser.positionalArguments().isEmpty();
    commandLine.paths = existing(parser.positionalArguments());
    if (commandLine.paths.isEmpty() && !parser.positionalArguments().isEmpty())
        return ended(wrongUse);
    return commandLine;
}
