// What desktops and shells know the program by: it is valid, and says what the program says of itself.
#include "collection/formats.h"
#include "saying.h"

#include <QMimeDatabase>
#include <QRegularExpression>
#include <QtTest>

#include <algorithm>

class TestDesktopFiles : public QObject
{
    Q_OBJECT

private slots:
    void judgesFindNothing_data();
    void judgesFindNothing();
    void oneVersionIsToldEverywhere();
    void theEntryNamesTheTypesOfAllFormats();
    void everyOptionIsExplained_data();
    void everyOptionIsExplained();
    void shellsComplete_data();
    void shellsComplete();
    void iconsAreAsLargeAsTheirFoldersSay();

private:
    static QStringList options();
};

namespace {
const QString packaging = MELODRIFT_ROOT "/packaging/";
const QString made = MELODRIFT_MADE "/";
const QString described = made + "melodrift-cli/";
const QString metainfo = made + "example.melodrift.Melodrift.metainfo.xml";
const QString entry = packaging + "desktop/melodrift.desktop";

QString contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}
} // namespace

/// The long ones, as the program tells them.
QStringList TestDesktopFiles::options()
{
    ProgramRun run;
    run.startMelodrift({"--help"});
    if (!run.process.waitForFinished(patience))
        return {};
    QStringList found;
    auto matches = QRegularExpression("--[a-z][a-z-]+").globalMatch(run.process.readAllStandardOutput());
    while (matches.hasNext())
        found.append(matches.next().captured());
    found.removeDuplicates();
    return found;
}

void TestDesktopFiles::judgesFindNothing_data()
{
    QTest::addColumn<QStringList>("command");
    QTest::addColumn<bool>("isSilent");
    QTest::newRow("desktop entry") << QStringList{"desktop-file-validate", entry} << true;
    QTest::newRow("metadata") << QStringList{"appstreamcli", "validate", "--no-net", metainfo} << false;
    QTest::newRow("manual, man") << QStringList{"man",    "--warnings=w", "-l",
                                                "-Tutf8", "-Z",           made + "melodrift.1"}
                                 << false;
    QTest::newRow("manual, mandoc") << QStringList{"mandoc", "-T", "lint", made + "melodrift.1"} << true;
    QTest::newRow("tool's manual, man")
        << QStringList{"man", "--warnings=w", "-l", "-Tutf8", "-Z", described + "melodrift-cli.1"} << false;
    QTest::newRow("tool's manual, mandoc")
        << QStringList{"mandoc", "-T", "lint", described + "melodrift-cli.1"} << true;
    QTest::newRow("tool, bash") << QStringList{"bash", "-n", described + "melodrift-cli"} << true;
    QTest::newRow("tool, zsh") << QStringList{"zsh", "-n", described + "_melodrift-cli"} << true;
    QTest::newRow("tool, fish") << QStringList{"fish", "--no-execute", described + "melodrift-cli.fish"}
                                << true;
    QTest::newRow("bash") << QStringList{"bash", "-n", packaging + "completions/melodrift"} << true;
    QTest::newRow("zsh") << QStringList{"zsh", "-n", packaging + "completions/_melodrift"} << true;
    QTest::newRow("fish") << QStringList{"fish", "--no-execute", packaging + "completions/melodrift.fish"}
                          << true;
}

void TestDesktopFiles::judgesFindNothing()
{
    QFETCH(QStringList, command);
    QFETCH(bool, isSilent);
    const QString judge = command.takeFirst();
    const Said said = say(judge, command);
    if (said.code == -1)
        QSKIP(qPrintable(said.output));
    QVERIFY2(said.code == 0, qPrintable(said.output));
    QVERIFY2(!isSilent || said.output.isEmpty(), qPrintable(said.output));
    QVERIFY2(!said.output.contains("warning"), qPrintable(said.output));
}

void TestDesktopFiles::oneVersionIsToldEverywhere()
{
    const QString version = MELODRIFT_VERSION;
    ProgramRun run;
    run.startMelodrift({"--version"});
    QVERIFY(run.process.waitForFinished(patience));
    QCOMPARE(QString(run.process.readAllStandardOutput()), "Melodrift " + version + '\n');
    QVERIFY(contentOf(metainfo).contains("<release version=\"" + version + '"'));
    QVERIFY(contentOf(made + "melodrift.1").contains("\"Melodrift " + version + '"'));
}

void TestDesktopFiles::theEntryNamesTheTypesOfAllFormats()
{
    const QString line = contentOf(entry).section("MimeType=", 1).section('\n', 0, 0);
    const QStringList types = line.split(';', Qt::SkipEmptyParts);
    QVERIFY(types.contains("inode/directory"));
    const QMimeDatabase database;
    for (const QString& pattern : Formats::namePatterns().split(' ')) {
        const QMimeType type =
            database.mimeTypeForFile(QString(pattern).replace('*', "song"), QMimeDatabase::MatchExtension);
        const QStringList names = type.aliases() << type.name();
        const auto isNamed = [&](const QString& name) { return types.contains(name); };
        QVERIFY2(std::any_of(names.begin(), names.end(), isNamed),
                 qPrintable(pattern + " is " + type.name()));
    }
}

void TestDesktopFiles::everyOptionIsExplained_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("dashes"); ///< as they are written there
    QTest::newRow("manual") << made + "melodrift.1" << QString("\\-");
    QTest::newRow("bash") << packaging + "completions/melodrift" << QString("-");
    QTest::newRow("zsh") << packaging + "completions/_melodrift" << QString("-");
    QTest::newRow("fish") << packaging + "completions/melodrift.fish" << QString();
}

void TestDesktopFiles::everyOptionIsExplained()
{
    QFETCH(QString, path);
    QFETCH(QString, dashes);
    const QString explained = contentOf(path);
    QVERIFY(options().contains("--itunes-library"));
    for (QString option : options()) {
        if (dashes.isEmpty())
            option.replace(QRegularExpression("^--"), "-l ");
        else
            option.replace('-', dashes);
        QVERIFY2(explained.contains(option), qPrintable(option));
    }
}

void TestDesktopFiles::shellsComplete_data()
{
    QTest::addColumn<QStringList>("command");
    const QString bash = "source " + packaging +
                         "completions/melodrift; COMP_WORDS=(melodrift --lo); COMP_CWORD=1; _melodrift;"
                         "printf '%s' \"${COMPREPLY[@]}\"";
    QTest::newRow("bash") << QStringList{"bash", "-c", bash};
    QTest::newRow("fish") << QStringList{
        "fish", "-c", "source " + packaging + "completions/melodrift.fish; complete -C 'melodrift --lo'"};
}

void TestDesktopFiles::shellsComplete()
{
    QFETCH(QStringList, command);
    const QString shell = command.takeFirst();
    const Said said = say(shell, command);
    if (said.code == -1)
        QSKIP(qPrintable(said.output));
    QCOMPARE(said.output.section('\t', 0, 0).trimmed(), QString("--local"));
}

void TestDesktopFiles::iconsAreAsLargeAsTheirFoldersSay()
{
    const QDir icons(packaging + "icons");
    for (const int side : {16, 22, 24, 32, 48, 64, 128, 256, 512}) {
        QFile icon(icons.filePath(QStringLiteral("%1x%1/apps/melodrift.png").arg(side)));
        QVERIFY2(icon.open(QIODevice::ReadOnly), qPrintable(icon.fileName()));
        const QByteArray head = icon.read(24); // the width stands behind the first chunk's name
        QCOMPARE(head.mid(16, 4).toHex().toInt(nullptr, 16), side);
        QCOMPARE(head.mid(20, 4).toHex().toInt(nullptr, 16), side);
    }
    QVERIFY(contentOf(icons.filePath("scalable/apps/melodrift.svg")).startsWith("<svg"));
}

QTEST_GUILESS_MAIN(TestDesktopFiles)
#include "tst_desktopfiles.moc"
