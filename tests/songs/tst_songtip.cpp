#include "removalfixture.h"
#include "songs/songtip.h"

/// What tells copies of a song apart.
class TestSongTip : public RemovalFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { start(); }
    void init() { prepare(); }

    void aFileIsToldByPathSizeDateAndTags();
    void aTrackIsToldByItsFile();
    void whatIsMissingIsSaid();
    void everyTagIsOneLine();

private:
    static QDateTime someDay() { return QDateTime(QDate(2024, 5, 17), QTime(14, 3, 59)); }
    static void change(const QString& path, const QDateTime& when)
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(when, QFileDevice::FileModificationTime));
    }
};

void TestSongTip::aFileIsToldByPathSizeDateAndTags()
{
    QMusicInfo* const one = song("ferry");
    LocalMusicInfo& local = *one->localInfo;
    local.title = QStringLiteral("Midnight Ferry");
    local.artist = QStringLiteral("Ida Marlowe");
    local.album = QStringLiteral("Tides");
    local.genre = QStringLiteral("Électro");
    local.year = 2012;
    local.trackNumber = 7;
    change(fileOf(one), someDay());
    QCOMPARE(
        SongTip::of(one).split('\n'),
        QStringList({fileOf(one), "5.00B, changed 2024-05-17 14:03", "Title: Midnight Ferry",
                     "Artist: Ida Marlowe", "Album: Tides", "Genre: Électro", "Year: 2012", "Track No: 7"}));
}

void TestSongTip::aTrackIsToldByItsFile()
{
    const Fixtures::ModeGuard mode(false);
    const QString path = Fixtures::saveBytes("music", m_folder->filePath("a b.mp3"));
    change(path, someDay());
    const auto track = Fixtures::makeSong(false);
    const QByteArray location = "file://localhost" + m_folder->path().toUtf8() + "/a%20b.mp3";
    track->record.location = location.constData();
    track->record.size = 3000000; // as the library has it
    QCOMPARE(SongTip::of(&track->info).split('\n').mid(0, 3),
             QStringList({path, "2.86MB, changed 2024-05-17 14:03", QString::fromUtf8("Title: Täxt")}));
}

void TestSongTip::whatIsMissingIsSaid()
{
    QMusicInfo* const one = song("ferry");
    QVERIFY(QFile::remove(fileOf(one)));
    QCOMPARE(SongTip::of(one).split('\n').mid(1),
             QStringList({"There is no such file", "Title: unknown", "Artist: unknown", "Album: unknown",
                          "Genre: unknown", "Year: unknown", "Track No: unknown"}));
}

void TestSongTip::everyTagIsOneLine()
{
    QMusicInfo* const one = song("ferry");
    one->localInfo->title = QStringLiteral("Midnight\nArtist: \t somebody");
    one->localInfo->album = QStringLiteral("la ").repeated(100000);
    const QStringList lines = SongTip::of(one).split('\n');
    QCOMPARE(lines.size(), 8);
    QCOMPARE(lines.at(2), QString("Title: Midnight Artist: somebody"));
    QVERIFY(lines.at(4).size() < 250);
}

QTEST_MAIN(TestSongTip)
#include "tst_songtip.moc"
