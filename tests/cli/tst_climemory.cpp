// How the memory of a run grows with the songs that it reads. Of a system's own measure, the most that a
// process had at once, so that nothing depends on when somebody looks.
#include "clirun.h"
#include "filebytes.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

class TestCliMemory : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void memoryGrowsNoFasterThanThis_data();
    void memoryGrowsNoFasterThanThis();

private:
    static constexpr int few = 1000;
    static constexpr int many = 9999;

    void makeSongs(const QString& folder, int count) const;
    qint64 mostMemory(const QStringList& arguments) const;

    CliRun m_run;
    QByteArray m_song;
};

void TestCliMemory::initTestCase()
{
    m_song = Fixtures::readBytes(m_run.addSong("one.mp3", CliRun::texts("TITLE-0000"))).left(4096);
    makeSongs("few", few);
    makeSongs("many", many);
}

/// Fifty to a folder, which a walk keeps, and of ten two are alike.
void TestCliMemory::makeSongs(const QString& folder, int count) const
{
    QByteArray song = m_song;
    const int title = song.indexOf("TITLE-");
    QVERIFY(title > 0);
    for (int i = 0; i < count; ++i) {
        const QString album =
            m_run.path(QString("%1/Artist %2/An album of fifty songs").arg(folder).arg(i / 50));
        if (i % 50 == 0)
            QVERIFY(QDir().mkpath(album));
        song.replace(title + 6, 4, QByteArray::number(i % 10 == 0 ? i + 1 : i).rightJustified(4, '0'));
        Fixtures::saveBytes(song, QString("%1/%2 A song with a name.mp3").arg(album).arg(i % 50));
    }
}

/// Of a run, in bytes.
qint64 TestCliMemory::mostMemory(const QStringList& arguments) const
{
    std::vector<QByteArray> words{QFile::encodeName(CliRun::program())};
    for (const QString& argument : arguments)
        words.push_back(QFile::encodeName(argument));
    std::vector<char*> argv;
    for (QByteArray& word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);
    const QByteArray folder = QFile::encodeName(m_run.path());
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(::open("/dev/null", O_WRONLY), STDOUT_FILENO);
        if (::chdir(folder.constData()) == 0)
            ::execv(argv.front(), argv.data());
        ::_exit(127);
    }
    int status = 0;
    struct rusage usage = {};
    if (::wait4(child, &status, 0, &usage) != child || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
        return -1;
    return qint64(usage.ru_maxrss) * 1024;
}

void TestCliMemory::memoryGrowsNoFasterThanThis_data()
{
    QTest::addColumn<QStringList>("command");
    QTest::addColumn<int>("bytesOfASong");
    // Much less than a path: nothing keeps a song.
    QTest::newRow("scan") << QStringList{"scan", "-q"} << 80;
    QTest::newRow("scan, line by line") << QStringList{"scan", "-q", "--ndjson"} << 80;
    QTest::newRow("undefined, line by line") << QStringList{"undefined", "-q", "--ndjson"} << 80;
    QTest::newRow("duplicates") << QStringList{"duplicates", "-q"} << 400;
    QTest::newRow("duplicates by artist and title")
        << QStringList{"duplicates", "-q", "--by", "artist+title"} << 400;
}

void TestCliMemory::memoryGrowsNoFasterThanThis()
{
    QFETCH(QStringList, command);
    QFETCH(int, bytesOfASong);
    const qint64 small = mostMemory(command + QStringList{"few"});
    const qint64 large = mostMemory(command + QStringList{"many"});
    QVERIFY(small > 0 && large > 0);
    const qint64 growth = (large - small) / (many - few);
    qInfo("%d bytes a song", int(growth));
    QVERIFY2(growth < bytesOfASong, qPrintable(QString::number(growth)));
}

QTEST_GUILESS_MAIN(TestCliMemory)
#include "tst_climemory.moc"
