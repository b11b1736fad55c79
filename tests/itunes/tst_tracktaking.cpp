// Tracks that one run takes out, and another one puts back.
#include "itunes/librarysight.h"
#include "itunes/tracktaking.h"
#include "songlibrary.h"

#include <QTextCodec>
#include <QtTest>

#include <csignal>
#include <memory>
#include <sys/resource.h>

using Songs = QList<int>;

class TestTrackTaking : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void whatWasTakenComesBackByteForByte_data();
    void whatWasTakenComesBackByteForByte();
    void stepsComeBackTheLastOneFirst();
    void whatWasTakenInPartComesBackWhole();
    void whatIsThereAlreadyStays();
    void anotherProgramsLibraryIsLeftAlone_data();
    void anotherProgramsLibraryIsLeftAlone();
    void whatIsNoneIsNotTaken();
    void oneThatIsNotAnnouncedStays();
    void oneThatIsNotThereOnceRefusesAll();
    void aBusyLibraryIsLeft();
    void aFullDiskLeavesTheLibrary();
    void whatAnEarlierRunLeftIsWrittenFirst();
    void lookingChangesNothing();

private:
    std::string path() const { return QFile::encodeName(m_songs->path()).toStdString(); }
    iTunesTaking take(const Songs& songs);
    bool putBack() { return putTracksBack(path(), m_taken, m_reason); }

    std::unique_ptr<SongLibrary> m_songs;
    std::string m_taken;
    std::string m_reason;
};

void TestTrackTaking::init()
{
    m_songs = std::make_unique<SongLibrary>();
    m_taken.clear();
    m_reason.clear();
}

void TestTrackTaking::cleanup()
{
    QVERIFY2(m_songs->temporaries().isEmpty(), qPrintable(m_songs->temporaries().join(' ')));
    m_songs.reset();
    AudioFile::takeLog();
}

iTunesTaking TestTrackTaking::take(const Songs& songs)
{
    std::vector<std::uint64_t> ids;
    for (const int song : songs)
        ids.push_back(SongLibrary::id(song));
    const auto announce = [this](const std::string& taken) {
        m_taken = taken;
        return std::string();
    };
    return takeTracksOut(path(), ids, announce, m_reason);
}

void TestTrackTaking::whatWasTakenComesBackByteForByte_data()
{
    QTest::addColumn<QByteArray>("codec");
    for (const char* codec : {"UTF-8", "UTF-16LE", "UTF-16BE", "ISO-8859-1"})
        QTest::newRow(codec) << QByteArray(codec);
}

void TestTrackTaking::whatWasTakenComesBackByteForByte()
{
    QFETCH(QByteArray, codec);
    m_songs->makeSongs(300);
    m_songs->tracks[4].name = "Caf\xC3\xA9";
    QString text = QString::fromUtf8(m_songs->document());
    text.replace("UTF-8", codec == "UTF-8" || codec == "ISO-8859-1" ? codec : "UTF-16");
    const QTextCodec* const chosen = QTextCodec::codecForName(codec);
    const QByteArray mark = codec == "UTF-16LE" ? "\xFF\xFE" : codec == "UTF-16BE" ? "\xFE\xFF" : "";
    QTextCodec::ConverterState plain(QTextCodec::IgnoreHeader);
    m_songs->make(mark + chosen->fromUnicode(text.constData(), text.size(), &plain));
    closeITunesLibrary();
    const QByteArray before = m_songs->content();

    QCOMPARE(take({4, 0, 5, 299}), iTunesTaking::Done);
    QVERIFY(!QFile::exists(m_songs->journal()));
    QCOMPARE(LibraryCalls::read(m_songs->path()).count, 296);
    closeITunesLibrary();
    QVERIFY2(putBack(), m_reason.c_str());
    QVERIFY(m_songs->content() == before);
    QVERIFY(QFile::exists(m_songs->backup()));
}

void TestTrackTaking::stepsComeBackTheLastOneFirst()
{
    m_songs->makeSongs(9);
    const QByteArray before = m_songs->content();
    closeITunesLibrary();
    QCOMPARE(take({1, 7}), iTunesTaking::Done);
    const std::string first = m_taken;
    const QByteArray between = m_songs->content();
    QCOMPARE(take({0, 3}), iTunesTaking::Done);
    const std::string second = m_taken;

    QVERIFY(!putTracksBack(path(), first, m_reason));
    QCOMPARE(QString::fromStdString(m_reason), QString("another program changed it since"));
    QVERIFY(putTracksBack(path(), second, m_reason));
    QVERIFY(m_songs->content() == between);
    QVERIFY(putTracksBack(path(), first, m_reason));
    QVERIFY(m_songs->content() == before);
}

void TestTrackTaking::whatWasTakenInPartComesBackWhole()
{
    m_songs->makeSongs(9);
    const QByteArray before = m_songs->content();
    closeITunesLibrary();
    QCOMPARE(take({1, 3, 7, 8}), iTunesTaking::Done);
    const std::string all = m_taken;
    QVERIFY(putBack());
    QCOMPARE(take({3, 8}), iTunesTaking::Done);
    QVERIFY(putTracksBack(path(), all, m_reason));
    QVERIFY(m_songs->content() == before);
}

void TestTrackTaking::whatIsThereAlreadyStays()
{
    m_songs->makeSongs(5);
    closeITunesLibrary();
    QCOMPARE(take({2}), iTunesTaking::Done);
    QVERIFY(putBack());
    const QByteArray before = m_songs->content();
    const ino_t file = fileNumber(m_songs->path());
    QVERIFY(putBack());
    QVERIFY(m_songs->content() == before);
    QCOMPARE(fileNumber(m_songs->path()), file);
}

void TestTrackTaking::anotherProgramsLibraryIsLeftAlone_data()
{
    QTest::addColumn<QByteArray>("old");
    QTest::addColumn<QByteArray>("anew");
    QTest::newRow("a name of another length") << QByteArray("<string>File") << QByteArray("<string>Files");
    QTest::newRow("one letter") << QByteArray("<string>File") << QByteArray("<string>Film");
    QTest::newRow("at its end") << QByteArray("</plist>\n") << QByteArray("</plist>\n\n");
    QTest::newRow("broken") << QByteArray("</plist>\n") << QByteArray();
}

void TestTrackTaking::anotherProgramsLibraryIsLeftAlone()
{
    QFETCH(QByteArray, old);
    QFETCH(QByteArray, anew);
    m_songs->makeSongs(6);
    closeITunesLibrary();
    QCOMPARE(take({2, 5}), iTunesTaking::Done);
    QByteArray others = m_songs->content();
    const int place = others.lastIndexOf(old);
    QVERIFY(place > 0);
    Fixtures::writeLibrary(m_songs->path(), others.replace(place, old.size(), anew));
    QVERIFY(!putBack());
    QVERIFY(!m_reason.empty());
    QVERIFY(m_songs->content() == others);
    QVERIFY(!QFile::exists(m_songs->journal()));
}

void TestTrackTaking::whatIsNoneIsNotTaken()
{
    m_songs->makeSongs(6);
    closeITunesLibrary();
    QCOMPARE(take({2, 5}), iTunesTaking::Done);
    const QByteArray after = m_songs->content();
    const std::string whole = m_taken;
    for (std::size_t size = 0; size < whole.size(); ++size) {
        if (size % 7 != 0 && whole[size - 1] != '\n')
            continue;
        m_taken = whole.substr(0, size);
        QVERIFY2(!putBack(), qPrintable(QString::number(size)));
    }
    m_taken = whole;
    m_taken[whole.size() / 2] ^= 1;
    QVERIFY(!putBack());
    QVERIFY(m_songs->content() == after);
}

void TestTrackTaking::oneThatIsNotAnnouncedStays()
{
    m_songs->makeSongs(4);
    const QByteArray before = m_songs->content();
    closeITunesLibrary();
    const auto refuse = [](const std::string&) { return std::string("no room"); };
    QCOMPARE(takeTracksOut(path(), {SongLibrary::id(1)}, refuse, m_reason), iTunesTaking::Refused);
    QCOMPARE(m_reason, std::string("no room"));
    QVERIFY(m_songs->content() == before);
    QVERIFY(!QFile::exists(m_songs->journal()));
}

void TestTrackTaking::oneThatIsNotThereOnceRefusesAll()
{
    m_songs->makeSongs(5);
    m_songs->tracks[3].persistentId = m_songs->tracks[4].persistentId;
    m_songs->make(m_songs->document());
    const QByteArray before = m_songs->content();
    closeITunesLibrary();
    QCOMPARE(take({0, 4}), iTunesTaking::Refused);
    QCOMPARE(take({0, 17}), iTunesTaking::Refused);
    QVERIFY(m_songs->content() == before);
    QVERIFY(!QFile::exists(m_songs->journal()));
}

/// As long as another program has the journal, here this one's own calls.
void TestTrackTaking::aBusyLibraryIsLeft()
{
    m_songs->makeSongs(5);
    closeITunesLibrary();
    QCOMPARE(take({2}), iTunesTaking::Done);
    m_songs->make(m_songs->content());
    QCOMPARE(int(deleteMusic(SongLibrary::id(0))), 1);
    const std::string taken = m_taken;
    const bool isOpen = QFile::exists(m_songs->journal());
    const bool refusesBoth = take({1}) == iTunesTaking::Refused && !putTracksBack(path(), taken, m_reason);
    if (isOpen && QFile::exists(m_songs->journal())) // else it was written meanwhile
        QVERIFY(refusesBoth);
    closeITunesLibrary();
}

void TestTrackTaking::aFullDiskLeavesTheLibrary()
{
    std::signal(SIGXFSZ, SIG_IGN);
    m_songs->makeSongs(200);
    const QByteArray before = m_songs->content();
    closeITunesLibrary();
    rlimit limit = {};
    getrlimit(RLIMIT_FSIZE, &limit);
    const auto fillDisk = [&](const std::string&) {
        const rlimit small{rlim_t(before.size() / 2), limit.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
        return std::string();
    };
    QCOMPARE(takeTracksOut(path(), {SongLibrary::id(1)}, fillDisk, m_reason), iTunesTaking::Refused);
    setrlimit(RLIMIT_FSIZE, &limit);
    QVERIFY2(m_reason.find("disk") != std::string::npos, m_reason.c_str());
    QVERIFY(m_songs->content() == before);
    QVERIFY(!QFile::exists(m_songs->journal()));
    QCOMPARE(iTunesLibrarySight(path()).count(), 200);
}

void TestTrackTaking::whatAnEarlierRunLeftIsWrittenFirst()
{
    const QByteArray left = m_songs->leftBy([] { QCOMPARE(int(deleteMusic(SongLibrary::id(5))), 1); });
    Fixtures::writeLibrary(m_songs->path(), m_songs->before);
    Fixtures::writeLibrary(m_songs->journal(), left);
    QCOMPARE(take({1}), iTunesTaking::Done);
    QCOMPARE(iTunesLibrarySight(path()).count(), 4);
    QVERIFY(putBack());
    QCOMPARE(iTunesLibrarySight(path()).count(), 5);
}

void TestTrackTaking::lookingChangesNothing()
{
    const QByteArray left = m_songs->leftBy([] { QCOMPARE(int(deleteMusic(SongLibrary::id(5))), 1); });
    Fixtures::writeLibrary(m_songs->path(), m_songs->before);
    Fixtures::writeLibrary(m_songs->journal(), left);
    const QStringList files = QDir(m_songs->folder()).entryList(QDir::AllEntries | QDir::Hidden);
    {
        const iTunesLibrarySight sight(path());
        QCOMPARE(sight.count(), 5);
        QCOMPARE(int(sight.waiting()), 1);
        QCOMPARE(sight.waitingProblem(), std::string());
        QCOMPARE(sight.identifierAt(0), SongLibrary::id(0));
        QCOMPARE(QString::fromStdString(sight.pathAt(0)), m_songs->media(0));
    }
    QVERIFY(LibraryCalls::contentOf(m_songs->path()) == m_songs->before);
    QVERIFY(LibraryCalls::contentOf(m_songs->journal()) == left);
    QCOMPARE(QDir(m_songs->folder()).entryList(QDir::AllEntries | QDir::Hidden), files);
    Fixtures::writeLibrary(m_songs->journal(), "something else");
    QVERIFY(!iTunesLibrarySight(path()).waitingProblem().empty());
    QVERIFY(QFile::remove(m_songs->journal()));
}

QTEST_GUILESS_MAIN(TestTrackTaking)
#include "tst_tracktaking.moc"
