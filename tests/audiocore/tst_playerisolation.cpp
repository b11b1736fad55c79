#include "fixtures.h"
#include "patience.h"
#include "playing.h"

#include <QDir>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QtTest>

#ifdef __linux__
#include <sys/inotify.h>
#include <unistd.h>
#endif

using namespace Playing;

namespace {
/// Makes room in a box and all boxes around it, the outermost first; the contents follow in `bytes`.
void insertInBox(QByteArray& file, const QList<QByteArray>& boxes, const QByteArray& bytes)
{
    int at = 0;
    for (const QByteArray& box : boxes) {
        at = file.indexOf(box, at);
        QVERIFY(at >= 4);
        const quint32 size = qFromBigEndian<quint32>(file.constData() + at - 4) + quint32(bytes.size());
        qToBigEndian(size, file.data() + at - 4);
    }
    file.insert(at + 8, bytes);
}

#ifdef __linux__
/// Names of the files that anybody opens in some folders.
class OpenedFiles
{
public:
    void watch(const QString& folder)
    {
        QVERIFY(inotify_add_watch(m_watch, folder.toLocal8Bit().constData(), IN_OPEN) >= 0);
    }
    ~OpenedFiles() { ::close(m_watch); }
    QStringList take() const
    {
        QStringList names;
        alignas(inotify_event) char events[4096];
        for (ssize_t got = 0; (got = ::read(m_watch, events, sizeof events)) > 0;)
            for (ssize_t at = 0; at < got;) {
                const auto* event = reinterpret_cast<const inotify_event*>(events + at);
                names.append(event->len > 0 ? QString::fromLocal8Bit(event->name) : QStringLiteral("."));
                at += ssize_t(sizeof *event + event->len);
            }
        return names;
    }

private:
    const int m_watch = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
};
#endif
} // namespace

/// A player reads the one file that it is given, and nothing that this or another file points to.
class TestPlayerIsolation : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void listsOfOtherFilesAreNoSongs_data();
    void listsOfOtherFilesAreNoSongs();
    void aReferenceInASongIsNotFollowed();
    void nothingButTheSongIsRead();

private:
    QString path(const QString& name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
};

void TestPlayerIsolation::init()
{
    chooseOutput("null");
}

void TestPlayerIsolation::listsOfOtherFilesAreNoSongs_data()
{
    QTest::addColumn<QByteArray>("list");
    const QByteArray song = Fixtures::tone("wav").toUtf8();
    const QByteArray http = "http://127.0.0.1:%PORT%/song.mp3";
    QTest::newRow("m3u") << "#EXTM3U\n#EXTINF:3,Song\n" + http + "\n" + song + "\n";
    QTest::newRow("bare m3u") << song + "\n" + http + "\n";
    QTest::newRow("segments") << "#EXTM3U\n#EXT-X-TARGETDURATION:3\n#EXTINF:3,\n" + http +
                                     "\n#EXT-X-ENDLIST\n";
    QTest::newRow("pls") << "[playlist]\nNumberOfEntries=1\nFile1=" + http + "\n";
    QTest::newRow("edl") << "# mpv EDL v0\n" + song + "\n" + http + "\n";
    QTest::newRow("cue") << "FILE \"" + song + "\" WAVE\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n";
    QTest::newRow("concat") << "ffconcat version 1.0\nfile '" + song + "'\n";
    QTest::newRow("asx") << "<asx version=\"3.0\"><entry><ref href=\"" + http + "\"/></entry></asx>";
    QTest::newRow("reference") << "[Reference]\nRef1=" + http + "\n";
}

void TestPlayerIsolation::listsOfOtherFilesAreNoSongs()
{
    QFETCH(QByteArray, list);
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    list.replace("%PORT%", QByteArray::number(server.serverPort()));
    for (const char* suffix : {"mp3", "m4a", "ogg", "wav", "m3u", "cue", "edl"}) {
        const QString file = path(QString("list.") + suffix);
        setContent(file, list);
        verifyNothing(file);
    }
    QVERIFY(!server.waitForNewConnection(50));
}

void TestPlayerIsolation::aReferenceInASongIsNotFollowed()
{
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    const QByteArray address = "http://127.0.0.1:" + QByteArray::number(server.serverPort()) + "/song.m4a";
    const QByteArray song = contentOf(Fixtures::tone("m4a"));
    const QList<QByteArray> place{"moov", "trak", "mdia", "minf", "dinf", "dref", "url "};
    QByteArray elsewhere = song;
    insertInBox(elsewhere, place, address + '\0');
    elsewhere[elsewhere.indexOf("url ", elsewhere.indexOf("dref")) + 7] = 0; // not in this file
    setContent(path("reference.m4a"), elsewhere);

    QByteArray list = "#EXTM3U\n" + address + "\n" + contentOf(Fixtures::tone("mp3"));
    setContent(path("front.mp3"), list);
    verifyEnds({path("reference.m4a"), path("front.mp3")});
    QVERIFY(!server.waitForNewConnection(50));
}

void TestPlayerIsolation::nothingButTheSongIsRead()
{
#ifdef __linux__
    QTemporaryDir home;
    QTemporaryDir music;
    const QString settings = home.path() + "/.config/mpv";
    QVERIFY(QDir().mkpath(settings + "/scripts"));
    for (const char* name : {"mpv.conf", "input.conf", "scripts/script.lua"})
        setContent(settings + '/' + name, "# no\n");
    const QString song = Fixtures::copyTone("mp3", music.path());
    for (const char* name : {"song.m3u", "song.cue", "song.srt", "song.lrc", "song.wav", "song.jpg",
                             "cover.jpg", "song.mp3.conf", "folder.png"})
        setContent(music.filePath(name), contentOf(Fixtures::tone("wav")));

    const QByteArray oldHome = qgetenv("HOME");
    qputenv("HOME", home.path().toLocal8Bit());
    OpenedFiles seen;
    for (const QString& folder :
         {home.path(), home.path() + "/.config", settings, settings + "/scripts", music.path()})
        seen.watch(folder);
    Player player = opened(song);
    player->Seek(2800);
    player->Play();
    QVERIFY(reaches(*player, PLAYER_STATE_FINISHED));
    player.reset();
    qputenv("HOME", oldHome);
    QStringList names = seen.take();
    QVERIFY(names.contains("song.mp3"));
    names.removeAll("song.mp3");
    QVERIFY2(names.isEmpty(), qPrintable(names.join(' ')));
    QCOMPARE(QDir(home.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList(".config"));
#else
    QSKIP("needs a way to see which files are opened");
#endif
}

QTEST_GUILESS_MAIN(TestPlayerIsolation)
#include "tst_playerisolation.moc"
