#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "collection/coretags.h"
#include "collection/songlist.h"
#include "collection/songreading.h"
#include "fixtures.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace {
/// So many are more than are under way at once.
constexpr int manySongs = 600;
} // namespace

class TestSongReading : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void aSongIsWhatItsFileSays();
    void aNameThatIsNoTextIsRead();
    void whatCannotBeReadHasAReason();
    void songsComeInTheirOrder_data();
    void songsComeInTheirOrder();
    void aReadingThatIsGivenUpEnds();
    void theListKeepsWhatGroupsShow();
    void anEditChangesWhatItNames();
    void anEditThatFailsSaysWhy();

private:
    QByteArray songAt(const QString& name);

    QTemporaryDir m_folder;
    QByteArray m_cover;
};

void TestSongReading::initTestCase()
{
    AudioFile::takeLog();
    m_cover = Fixtures::jpeg(40, 40, 1);
}

/// A song with all fields.
QByteArray TestSongReading::songAt(const QString& name)
{
    const QString path = Fixtures::copyTone("mp3", m_folder.path(), name);
    AudioFile::write(path,
                     {{TAG_TITLE, "Halo"},
                      {TAG_ARTIST, "Zoé"},
                      {TAG_ALBUM, "First"},
                      {TAG_GENRE, "Pop"},
                      {TAG_YEAR, "2004"},
                      {TAG_TRACK, "3"}},
                     &m_cover);
    return QFile::encodeName(path);
}

void TestSongReading::aSongIsWhatItsFileSays()
{
    const QByteArray path = songAt("song");
    const SongFile song = SongFileReader().read(path.toStdString());
    QVERIFY2(song.isRead(), song.whyNot.c_str());
    QCOMPARE(song.path, path.toStdString());
    QCOMPARE(song.title, QString("Halo"));
    QCOMPARE(song.artist, QString("Zoé"));
    QCOMPARE(song.album, QString("First"));
    QCOMPARE(song.genre, QString("Pop"));
    QCOMPARE(song.year, 2004);
    QCOMPARE(song.track, 3);
    const AudioFile::Properties properties = AudioFile::properties(QFile::decodeName(path));
    QCOMPARE(song.format, properties.format);
    QCOMPARE(song.milliseconds, std::uint64_t(properties.duration));
    QCOMPARE(song.bitRate, std::uint64_t(properties.bitRate));
    QCOMPARE(song.sampleRate, std::uint64_t(properties.sampleRate));
    QCOMPARE(song.bytes, std::uint64_t(QFileInfo(QFile::decodeName(path)).size()));
    QCOMPARE(song.coverBytes, std::uint64_t(m_cover.size()));
}

void TestSongReading::aNameThatIsNoTextIsRead()
{
    const QByteArray path = songAt("before");
    const QByteArray odd = path + "\xFF\xC3.mp3";
    QCOMPARE(std::rename(path.constData(), odd.constData()), 0);
    const SongFile song = SongFileReader().read(odd.toStdString());
    TagTexts edit;
    edit.texts["title"] = "Other";
    const QString whyNot = CoreTags().write(odd.toStdString(), edit);
    const SongFile edited = SongFileReader().read(odd.toStdString());
    QCOMPARE(std::remove(odd.constData()), 0);
    QCOMPARE(song.title, QString("Halo"));
    QCOMPARE(whyNot, QString());
    QCOMPARE(edited.title, QString("Other"));
}

void TestSongReading::whatCannotBeReadHasAReason()
{
    SongFileReader reader;
    QCOMPARE(reader.read("/nowhere/x.mp3").whyNot, std::string("No such file or directory"));
    QCOMPARE(reader.read(m_folder.path().toStdString()).whyNot, std::string("it is no file"));
    const QString rubbish = m_folder.filePath("rubbish.mp3");
    QFile file(rubbish);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write("no music at all") > 0);
    file.close();
    QCOMPARE(reader.read(rubbish.toStdString()).whyNot, std::string("it holds no music that can be read"));
    QVERIFY(!AudioFile::takeLog().isEmpty());
}

void TestSongReading::songsComeInTheirOrder_data()
{
    QTest::addColumn<unsigned>("threads");
    QTest::newRow("the caller's own") << 0u;
    QTest::newRow("one") << 1u;
    QTest::newRow("four") << 4u;
}

void TestSongReading::songsComeInTheirOrder()
{
    QFETCH(unsigned, threads);
    const std::string path = songAt("ordered").toStdString();
    QVector<std::string> wanted;
    QVector<std::string> told;
    SongReading reading([&told](SongFile&& song) { told.append(song.isRead() ? song.path : song.whyNot); },
                        threads);
    for (int i = 0; i < manySongs; ++i) {
        if (i % 7 == 0) {
            const std::string reason = "number " + std::to_string(i);
            reading.add(SongFile::failed("folder", reason));
            wanted.append(reason);
        } else {
            wanted.append(i % 2 == 0 ? path : "No such file or directory");
            reading.add(i % 2 == 0 ? path : "/nowhere/x.mp3");
        }
    }
    reading.finish();
    QCOMPARE(told, wanted);
    AudioFile::takeLog();
}

void TestSongReading::aReadingThatIsGivenUpEnds()
{
    const std::string path = songAt("given up").toStdString();
    int told = 0;
    {
        SongReading reading([&told](SongFile&&) { ++told; }, 2);
        for (int i = 0; i < 20; ++i)
            reading.add(path);
    }
    QVERIFY(told <= 20);
}

void TestSongReading::theListKeepsWhatGroupsShow()
{
    const SongFile song = SongFileReader().read(songAt("kept").toStdString());
    SongFile other = song;
    other.title = QString("HALO (live)") + QChar() + "x";
    other.path = "/m/bad\xFF.mp3";
    other.milliseconds += 1;
    SongList exact(SongList::By::TitleAndDuration);
    SongList alike(SongList::By::ArtistAndTitle);
    for (SongList* const list : {&exact, &alike})
        for (const SongFile& one : {song, other, song})
            list->add(one);
    QCOMPARE(exact.groups(), QVector<QVector<int>>({{0, 2}}));
    other.title = "HALO (live)";
    alike.add(other);
    QCOMPARE(alike.groups(), QVector<QVector<int>>({{0, 2, 3}}));
    const SongFile kept = alike.at(1);
    QCOMPARE(kept.path, other.path);
    QCOMPARE(kept.title, QString("HALO (live)x"));
    QCOMPARE(kept.artist, song.artist);
    QCOMPARE(kept.milliseconds, other.milliseconds);
    QCOMPARE(kept.bytes, song.bytes);
    QCOMPARE(kept.bitRate, song.bitRate);
    QCOMPARE(kept.sampleRate, song.sampleRate);
    QCOMPARE(kept.format, song.format);
}

void TestSongReading::anEditChangesWhatItNames()
{
    const QByteArray path = songAt("edited");
    const std::string file = path.toStdString();
    CoreTags tags;
    TagTexts held;
    TagTexts edit;
    edit.texts["title"] = "Täxt";
    edit.texts["genre"] = QString();
    QCOMPARE(tags.write(file, edit), QString());
    QCOMPARE(tags.read(file, held), QString());
    QCOMPARE(
        held.texts,
        (QMap<QString, QString>{
            {"title", "Täxt"}, {"artist", "Zoé"}, {"album", "First"}, {"year", "2004"}, {"track", "3"}}));
    QCOMPARE(held.picture.value_or("none"), m_cover);
    edit = TagTexts();
    edit.picture = Fixtures::jpeg(50, 50, 2);
    QCOMPARE(tags.write(file, edit), QString());
    QCOMPARE(tags.read(file, held), QString());
    QCOMPARE(held.picture.value_or("none"), *edit.picture);
    edit.picture = QByteArray();
    QCOMPARE(tags.write(file, edit), QString());
    QCOMPARE(tags.read(file, held), QString());
    QVERIFY(!held.picture);
    QCOMPARE(held.texts.size(), 5);
}

void TestSongReading::anEditThatFailsSaysWhy()
{
    TagTexts texts;
    QCOMPARE(CoreTags().write("/nowhere/x.mp3", texts), QString("No such file or directory"));
    QCOMPARE(CoreTags().read("/nowhere/x.mp3", texts), QString("No such file or directory"));
    AudioFile::takeLog();
}

QTEST_GUILESS_MAIN(TestSongReading)
#include "tst_songreading.moc"
