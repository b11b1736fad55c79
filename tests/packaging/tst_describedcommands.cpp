// Manual and completions of melodrift-cli know every command and every option that its help tells of, and no
// other.
#include "saying.h"

#include <QRegularExpression>
#include <QtTest>

class TestDescribedCommands : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void everyCommandIsDescribed_data();
    void everyCommandIsDescribed();
    void theManualTellsOfAllOptions_data();
    void theManualTellsOfAllOptions();
    void shellsKnowAllOptions_data();
    void shellsKnowAllOptions();
    void shellsKnowValues_data();
    void shellsKnowValues();

private:
    void listBelow(const QStringList& path, const QStringList& words);

    QMap<QString, QStringList> m_options; ///< all names, by the words of their command
    QMap<QString, QStringList> m_commands;
};

namespace {
const QString folder = MELODRIFT_MADE "/melodrift-cli/";

QString helpOf(const QStringList& words)
{
    return say(QCoreApplication::applicationDirPath() + "/melodrift-cli", words + QStringList("--help"))
        .output;
}

QStringList sorted(QStringList names)
{
    names.sort();
    return names;
}

/// The first words of the lines of a part of the help, "-q,--quiet" as two.
QStringList named(const QString& help, const QString& part)
{
    const QStringList parts = help.split("\n\n");
    QStringList names;
    for (const QString& lines : parts)
        if (lines.startsWith(part + ":\n", Qt::CaseInsensitive))
            for (const QString& line : lines.split('\n'))
                if (QRegularExpression("^  [^ ]").match(line).hasMatch())
                    names += line.mid(2).section(' ', 0, 0).split(',');
    return names;
}

QString fileNamed(const QString& name)
{
    QFile file(folder + name);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

const char* const bashScript = R"(
    source "$0"
    COMP_WORDS=(melodrift-cli "$@") COMP_CWORD=$#
    compopt() { :; }
    _melodrift_cli
    printf '%s\n' "${COMPREPLY[@]}")";
const char* const fishScript = R"(
    source $argv[1]
    complete -C (string join -- ' ' melodrift-cli $argv[2..-1]) | string replace -r '\t.*' '')";

/// As the page has an option, whose dashes are typed ones.
QString inManual(const QString& option)
{
    return "\\fB" + QString(option).replace("-", "\\-") + "\\fR";
}

/// What the shell has for the words, the last of which is being typed.
Said completed(const QString& shell, const QStringList& words)
{
    return shell == "fish" ? say("fish", QStringList{"-c", fishScript, folder + "melodrift-cli.fish"} + words)
                           : say("bash", QStringList{"-c", bashScript, folder + "melodrift-cli"} + words);
}

/// Names of options in the function that zsh has for a command.
QStringList inZsh(const QString& command)
{
    const QString function =
        QString("_melodrift-cli" + (command.isEmpty() ? "" : '_' + command)).replace(' ', '_');
    const QString body =
        fileNamed("_melodrift-cli").section('\n' + function + "()\n", 1).section("\n}\n", 0, 0);
    QStringList names;
    auto matches = QRegularExpression("'(?:\\([^)]*\\)|\\*)(-[-a-z0-9]+)[=+]?\\[").globalMatch(body);
    while (matches.hasNext())
        names.append(matches.next().captured(1));
    return names;
}
} // namespace

/// The words are the path, and something for each place of a command that has others below it.
void TestDescribedCommands::listBelow(const QStringList& path, const QStringList& words)
{
    const QString help = helpOf(words);
    m_options[path.join(' ')] = named(help, "Options");
    m_commands[path.join(' ')] = named(help, "Subcommands");
    QStringList longer = words;
    for (int i = named(help, "Positionals").size(); i > 0; --i)
        longer.append("Library.xml");
    for (const QString& command : named(help, "Subcommands"))
        listBelow(path + QStringList(command), longer + QStringList(command));
}

void TestDescribedCommands::initTestCase()
{
    listBelow({}, {});
    QVERIFY(m_options.size() > 9);
    QVERIFY(m_options["clean"].contains("--keep"));
    QVERIFY(m_options["cover"].contains("-o"));
    for (const QStringList& options : qAsConst(m_options))
        QVERIFY(options.contains("--help"));
}

void TestDescribedCommands::everyCommandIsDescribed_data()
{
    QTest::addColumn<QString>("command");
    for (auto command = m_commands.cbegin(); command != m_commands.cend(); ++command)
        if (!command->isEmpty())
            QTest::newRow(qPrintable("commands of \"" + command.key() + '"')) << command.key();
}

void TestDescribedCommands::everyCommandIsDescribed()
{
    QFETCH(QString, command);
    const QStringList wanted = sorted(m_commands[command]);
    const QStringList typed = command.split(' ', Qt::SkipEmptyParts) + QStringList(QString());
    for (const QString& name : wanted) {
        const QString path = (command + ' ' + name).trimmed();
        QVERIFY2(fileNamed("melodrift-cli.1").contains("\n.SS " + path + '\n'), qPrintable(path));
        QVERIFY2(fileNamed("_melodrift-cli").contains("\n            '" + name + ':'), qPrintable(path));
    }
    for (const char* shell : {"bash", "fish"}) {
        const Said said = completed(shell, typed);
        if (said.code == -1)
            QSKIP(qPrintable(said.output));
        const QStringList known = said.output.split('\n', Qt::SkipEmptyParts);
        for (const QString& name : wanted)
            QVERIFY2(known.contains(name), qPrintable(name + " is not in: " + said.output));
    }
}

void TestDescribedCommands::theManualTellsOfAllOptions_data()
{
    QTest::addColumn<QString>("command");
    for (auto options = m_options.cbegin(); options != m_options.cend(); ++options)
        QTest::newRow(qPrintable("options of \"" + options.key() + '"')) << options.key();
}

void TestDescribedCommands::theManualTellsOfAllOptions()
{
    QFETCH(QString, command);
    const QString page = fileNamed("melodrift-cli.1");
    const QString general = page.section("\n.SH OPTIONS\n", 1).section("\n.SH", 0, 0);
    const QString own =
        command.isEmpty()
            ? general
            : page.section("\n.SS " + command + '\n', 1).section(QRegularExpression("\n.S[SH]"), 0, 0);
    for (const QString& option : qAsConst(m_options[command])) {
        const QString bold = inManual(option);
        QVERIFY2(own.contains(bold) || (option[1] != '-' && general.contains(bold)), qPrintable(option));
        const QRegularExpression entry("\n\\.TP\n[^\n]*" + QRegularExpression::escape(bold));
        QVERIFY2(('\n' + own + general).contains(entry), qPrintable(option + " is not explained"));
    }
}

void TestDescribedCommands::shellsKnowAllOptions_data()
{
    QTest::addColumn<QString>("shell");
    QTest::addColumn<QString>("command");
    for (const QString& shell : {QString("bash"), QString("fish"), QString("zsh")})
        for (const QString& command : m_options.keys())
            QTest::newRow(qPrintable(shell + ", \"" + command + '"')) << shell << command;
}

void TestDescribedCommands::shellsKnowAllOptions()
{
    QFETCH(QString, shell);
    QFETCH(QString, command);
    if (shell == "zsh") {
        QCOMPARE(sorted(inZsh(command)), sorted(m_options[command]));
        return;
    }
    // Fish lists the short ones where one dash stands alone.
    QStringList known;
    for (const char* dashes : {"-", "--"}) {
        const Said said = completed(shell, command.split(' ', Qt::SkipEmptyParts) + QStringList(dashes));
        if (said.code == -1)
            QSKIP(qPrintable(said.output));
        known += said.output.split('\n', Qt::SkipEmptyParts);
    }
    known.removeDuplicates();
    QCOMPARE(sorted(known), sorted(m_options[command]));
}

void TestDescribedCommands::shellsKnowValues_data()
{
    QTest::addColumn<QString>("shell");
    QTest::addColumn<QStringList>("words");
    QTest::addColumn<QString>("value");
    for (const char* shell : {"bash", "fish"}) {
        QTest::addRow("%s, of a rule", shell) << shell << QStringList{"clean", "--keep", "b"} << "best";
        QTest::addRow("%s, of a field", shell) << shell << QStringList{"tag", "--clear", "ge"} << "genre";
        QTest::addRow("%s, of a kind", shell)
            << shell << QStringList{"scan", "Music", "--fail-on", "und"} << "undefined";
    }
}

void TestDescribedCommands::shellsKnowValues()
{
    QFETCH(QString, shell);
    QFETCH(QStringList, words);
    QFETCH(QString, value);
    const Said said = completed(shell, words);
    if (said.code == -1)
        QSKIP(qPrintable(said.output));
    QCOMPARE(said.output.trimmed(), value);
}

QTEST_GUILESS_MAIN(TestDescribedCommands)
#include "tst_describedcommands.moc"
