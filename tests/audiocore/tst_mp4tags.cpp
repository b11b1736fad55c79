#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "fixtures.h"
#include "mp4fixture.h"
#include "mp4judges.h"
#include "mp4kinds.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {
QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray song()
{
    return Mp4Kinds::untagged(contentOf(Fixtures::tone("m4a", 1000)));
}
} // namespace

/// Tags in odd places and of odd forms are read as others read them, and edited so that all find them.
class TestMp4Tags : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void areReadAsByOthers_data() { addKinds(); }
    void areReadAsByOthers();
    void editsAreReadByAll_data() { addKinds(); }
    void editsAreReadByAll();
    void whatIsTakenOutIsGoneForAll_data() { addKinds(); }
    void whatIsTakenOutIsGoneForAll();
    void aNewListTakesOverWhatOthersSay();
    void oldEncodingsAreRead();
    void aPictureInAnotherPlaceGivesWay();
    void aTrackKeepsWhatStandsBehindIt_data();
    void aTrackKeepsWhatStandsBehindIt();
    void whatIsTooLittleForRoomIsLeftByNone_data();
    void whatIsTooLittleForRoomIsLeftByNone();
    void whatCannotBeKeptIsNotSaved_data();
    void whatCannotBeKeptIsNotSaved();

private:
    void addKinds() const;
    QString file(const QByteArray& content);

    /// A song as it was, after an edit, and after its title was taken out.
    struct Song
    {
        Mp4Kinds::Kind kind;
        QString before;
        QString edited;
        QString emptied;
        QStringList log; ///< of saving
    };

    QTemporaryDir m_folder;
    int m_files = 0;
    QList<Song> m_songs;
    QHash<QString, Mp4Judges::Said> m_read;   ///< by mutagen
    QHash<QString, Mp4Judges::Heard> m_heard; ///< by ffmpeg
};

namespace {
const QHash<int, QString>& edits()
{
    static const QHash<int, QString> all = {{TAG_TITLE, QStringLiteral("Név")},
                                            {TAG_TRACK, QStringLiteral("7")}};
    return all;
}
} // namespace

/// Others are asked of all songs at once.
void TestMp4Tags::initTestCase()
{
    QStringList paths;
    for (const Mp4Kinds::Kind& kind : Mp4Kinds::oddTags(song())) {
        Song song{kind, file(kind.bytes), file(kind.bytes), file(kind.bytes), {}};
        AudioFile::takeLog();
        AudioFile::write(song.edited, edits());
        AudioFile::write(song.emptied, {{TAG_TITLE, QString()}});
        song.log = AudioFile::takeLog();
        paths << song.before << song.edited << song.emptied;
        m_songs << song;
    }
    m_read = Mp4Judges::mutagen(paths);
    m_heard = Mp4Judges::play(paths, m_folder.path());
}

void TestMp4Tags::addKinds() const
{
    QTest::addColumn<int>("number");
    for (int i = 0; i < m_songs.size(); ++i)
        QTest::newRow(qPrintable(m_songs.at(i).kind.name)) << i;
}

QString TestMp4Tags::file(const QByteArray& content)
{
    const QString path = m_folder.filePath(QStringLiteral("song%1.m4a").arg(++m_files));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qUtf8Printable(path));
    return path;
}

void TestMp4Tags::areReadAsByOthers()
{
    QFETCH(int, number);
    const Song& song = m_songs.at(number);
    const AudioFile::Content own = AudioFile::read(song.before);
    QCOMPARE(own.texts.value(TAG_TITLE), QStringLiteral("Old"));
    QCOMPARE(own.texts.value(TAG_ARTIST), QStringLiteral("Singer"));
    QCOMPARE(m_heard.value(song.before).texts.value("artist") == QLatin1String("Singer"),
             song.kind.ffmpegReads);
}

void TestMp4Tags::editsAreReadByAll()
{
    QFETCH(int, number);
    const Song& song = m_songs.at(number);
    QVERIFY2(song.log.isEmpty(), qPrintable(song.log.join('\n')));
    const AudioFile::Content own = AudioFile::read(song.edited);
    QCOMPARE(own.texts.value(TAG_TITLE), QStringLiteral("Név"));
    QCOMPARE(own.texts.value(TAG_ARTIST), QStringLiteral("Singer"));
    QCOMPARE(own.texts.value(TAG_TRACK), QStringLiteral("7"));
    const Mp4Judges::Heard heard = m_heard.value(song.edited);
    QCOMPARE(heard.texts.value("title"), QStringLiteral("Név"));
    QCOMPARE(heard.texts.value("artist"), QStringLiteral("Singer"));
    QCOMPARE(heard.texts.key("Old"), QString());
    QVERIFY(!heard.sound.isEmpty());
    QCOMPARE(heard.sound, m_heard.value(song.before).sound);
    QCOMPARE(m_read.value(song.edited).texts.value(QString::fromLatin1("\251nam")) == QStringLiteral("Név"),
             song.kind.mutagenReadsLater);
    const QByteArray saved = contentOf(song.edited);
    QCOMPARE(AudioFile::write(song.edited, edits()), 0);
    QVERIFY(contentOf(song.edited) == saved);
}

void TestMp4Tags::whatIsTakenOutIsGoneForAll()
{
    QFETCH(int, number);
    const Song& song = m_songs.at(number);
    const AudioFile::Content own = AudioFile::read(song.emptied);
    QVERIFY(!own.texts.contains(TAG_TITLE));
    QCOMPARE(own.texts.value(TAG_ARTIST), QStringLiteral("Singer"));
    QVERIFY(!contentOf(song.emptied).contains("Old"));
    QVERIFY(!m_heard.value(song.emptied).texts.contains("title"));
}

void TestMp4Tags::aNewListTakesOverWhatOthersSay()
{
    const QByteArray texts = Mp4::atom("\251nam", Mp4::number(3 << 16) + "Old") +
                             Mp4::atom("\251ART", Mp4::number(6 << 16) + "Singer") +
                             Mp4::atom("\251day", Mp4::number(4 << 16) + "1999");
    const QString path = file(Mp4Kinds::withInMoov(song(), Mp4::atom("udta", texts)));
    QCOMPARE(AudioFile::write(path, {{TAG_TITLE, QStringLiteral("New")}}), 0);
    const Mp4Judges::Said other = Mp4Judges::mutagen({path}).value(path);
    QCOMPARE(other.texts.value(QString::fromLatin1("\251nam")), QStringLiteral("New"));
    QCOMPARE(other.texts.value(QString::fromLatin1("\251ART")), QStringLiteral("Singer"));
    QCOMPARE(other.texts.value(QString::fromLatin1("\251day")), QStringLiteral("1999"));
    QVERIFY(!contentOf(path).contains("Old"));
    // What the list needs around it is there from now on.
    QCOMPARE(AudioFile::write(path, {{TAG_ALBUM, QStringLiteral("Album")}}), 0);
    QCOMPARE(contentOf(path).count("mdirappl"), 1);
}

void TestMp4Tags::oldEncodingsAreRead()
{
    const QByteArray texts = Mp4::atom("\251nam", Mp4::number(4 << 16) + "\x9F"
                                                                         "b\xE8\xF0") +
                             Mp4::atom("\251ART", Mp4::number(5 << 16 | 0x55C4) + "\xC3\xBC"
                                                                                  "b\xC3\xA9");
    const QString path = file(Mp4Kinds::withInMoov(song(), Mp4::atom("udta", texts)));
    const AudioFile::Content own = AudioFile::read(path);
    QCOMPARE(own.texts.value(TAG_TITLE), QString::fromUtf8("übË\xEF\xA3\xBF"));
    QCOMPARE(own.texts.value(TAG_ARTIST), QStringLiteral("übé"));
    QCOMPARE(AudioFile::write(path, {{TAG_TITLE, QStringLiteral("夜")}}), 0);
    QCOMPARE(Mp4Judges::ffmpeg(path).texts.value("title"), QStringLiteral("夜"));
}

void TestMp4Tags::aPictureInAnotherPlaceGivesWay()
{
    const QByteArray old = Fixtures::jpeg(20, 20, 1);
    const QByteArray picture = Fixtures::jpeg(400, 400, 2);
    const QByteArray list = Mp4::atom("ilst", Mp4::item("covr", 13, old));
    const QByteArray handler = Mp4::atom("hdlr", QByteArray(8, '\0') + "mdirappl" + QByteArray(9, '\0'));
    const QString path =
        file(Mp4Kinds::withInMoov(song(), Mp4::atom("meta", Mp4::number(0) + handler + list)));
    QCOMPARE(AudioFile::read(path).picture, old);
    QCOMPARE(AudioFile::write(path, {}, &picture), 0);
    QCOMPARE(AudioFile::read(path).picture, picture);
    QVERIFY(!contentOf(path).contains(old));
    QVERIFY(Mp4Judges::mutagen({path}).value(path).texts.contains("covr"));
}

void TestMp4Tags::aTrackKeepsWhatStandsBehindIt_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<bool>("stays");
    QTest::newRow("as long as it may be") << 64 << true;
    QTest::newRow("longer") << 65 << false;
}

void TestMp4Tags::aTrackKeepsWhatStandsBehindIt()
{
    QFETCH(int, size);
    QFETCH(bool, stays);
    const auto track = [size](char number) {
        return Mp4::item("trkn", 0,
                         QByteArray(3, '\0') + number + QByteArray("\0\x0C", 2).leftJustified(size - 4, 'x'));
    };
    const QString path = file(Mp4Kinds::withInMoov(song(), Mp4::tags(track(3))));
    QCOMPARE(AudioFile::read(path).texts.value(TAG_TRACK), QStringLiteral("3"));
    QCOMPARE(AudioFile::write(path, {{TAG_TRACK, QStringLiteral("7")}}), 0);
    const QByteArray alone = Mp4::item("trkn", 0, QByteArray("\0\0\0\7\0\0\0\0", 8));
    QVERIFY(contentOf(path).contains(stays ? track(7) : alone));
}

void TestMp4Tags::whatIsTooLittleForRoomIsLeftByNone_data()
{
    QTest::addColumn<int>("left");
    QTest::addColumn<bool>("fits");
    QTest::newRow("nothing is left") << 0 << true;
    QTest::newRow("a byte is left") << 1 << false;
    QTest::newRow("all but a head is left") << 7 << false;
    QTest::newRow("a head is left") << 8 << true;
}

void TestMp4Tags::whatIsTooLittleForRoomIsLeftByNone()
{
    QFETCH(int, left);
    QFETCH(bool, fits);
    constexpr int room = 40;
    const QByteArray handler = Mp4::atom("hdlr", QByteArray(8, '\0') + "mdirappl" + QByteArray(9, '\0'));
    const auto meta = [&handler](const QByteArray& title, int size) {
        const QByteArray free = size >= 8 ? Mp4::atom("free", QByteArray(size - 8, '\0')) : QByteArray();
        return Mp4::atom("meta",
                         Mp4::number(0) + handler + Mp4::atom("ilst", Mp4::item("\251nam", 1, title)) + free);
    };
    const QString path = file(Mp4Kinds::withInMoov(song(), Mp4::atom("udta", meta("Old", room))));
    const int size = contentOf(path).size();
    const QString title = QString(3 + room - left, QLatin1Char('x'));
    QCOMPARE(AudioFile::write(path, {{TAG_TITLE, title}}), 0);
    QCOMPARE(AudioFile::read(path).texts.value(TAG_TITLE), title);
    const QByteArray saved = contentOf(path);
    QCOMPARE(saved.size() == size, fits);
    QCOMPARE(saved.contains(meta(title.toUtf8(), left)), fits);
    QVERIFY(fits || saved.size() >= size + 8 - left);
}

void TestMp4Tags::whatCannotBeKeptIsNotSaved_data()
{
    QTest::addColumn<QByteArray>("content");
    const QByteArray behind = QByteArray(8, '\0') + Mp4::item("\251alb", 1, "Album");
    QTest::newRow("items behind room") << Mp4Kinds::withInMoov(song(), Mp4Kinds::listInMoov(behind));
    QTest::newRow("an item that is too long")
        << Mp4Kinds::withInMoov(song(), Mp4Kinds::listInMoov(Mp4::number(5000) + "\251alb"));
    const QByteArray places = Mp4::atom("iloc", QByteArray(8, '\0'));
    QTest::newRow("places of something else")
        << Mp4Kinds::withInMoov(song(), Mp4Kinds::listInMoov() + Mp4::atom("meta", Mp4::number(0) + places));
    QTest::newRow("texts without an end")
        << Mp4Kinds::withInMoov(song(), Mp4::atom("udta", Mp4::atom("\251nam", "Old").repeated(200)));
}

void TestMp4Tags::whatCannotBeKeptIsNotSaved()
{
    QFETCH(QByteArray, content);
    const QString path = file(content);
    QCOMPARE(AudioFile::read(path).texts.value(TAG_TITLE), QStringLiteral("Old"));
    const QByteArray picture = Fixtures::jpeg(300, 300, 1);
    AudioFile::takeLog();
    QVERIFY(AudioFile::write(path, {{TAG_TITLE, QStringLiteral("New")}}, &picture) != 0);
    const QStringList log = AudioFile::takeLog();
    QVERIFY2(log.size() == 1 && log.first().contains("not saved"), qPrintable(log.join('\n')));
    QVERIFY(contentOf(path) == content);
}

QTEST_GUILESS_MAIN(TestMp4Tags)
#include "tst_mp4tags.moc"
