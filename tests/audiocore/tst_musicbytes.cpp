// Which bytes of a file are its music.
#include "audiocore/musicbytes.h"
#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "filebytes.h"
#include "fixtures.h"
#include "mediabytes.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

namespace {
struct Music
{
    MusicBytesStatus status;
    QByteArray bytes;
};

Music musicOf(const QString& path)
{
    Music music = {};
    const QByteArray name = QFile::encodeName(path);
    music.status = ReadMusicBytes(name.constData(), [&music](const char* bytes, std::size_t count) {
        music.bytes.append(bytes, int(count));
        return true;
    });
    return music;
}

void tag(const QString& path, const QString& title, const QByteArray& picture)
{
    QHash<int, QString> texts;
    for (const int type : {TAG_TITLE, TAG_ARTIST, TAG_ALBUM})
        texts.insert(type, title);
    if (AudioFile::write(path, texts, &picture) != 0)
        qFatal("cannot tag %s", qPrintable(path));
}
} // namespace

class TestMusicBytes : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { AudioFile::takeLog(); }
    void tagsAreNoMusic_data();
    void tagsAreNoMusic();
    void everyByteOfMusicCounts_data() { tagsAreNoMusic_data(); }
    void everyByteOfMusicCounts();
    void tagsBehindAreNoMusic_data();
    void tagsBehindAreNoMusic();
    void whatCannotBeTakenApartIsMusic();
    void whatHasNoMusicIsNamed();
    void whoTakesTheBytesEndsIt();

private:
    QTemporaryDir m_folder;
};

void TestMusicBytes::tagsAreNoMusic_data()
{
    QTest::addColumn<QString>("kind");
    for (const QString& kind :
         Fixtures::formats() + Fixtures::furtherKinds() + Fixtures::mp4Kinds() + QStringList("mp4fragments"))
        QTest::addRow("%s", qPrintable(kind)) << kind;
}

void TestMusicBytes::tagsAreNoMusic()
{
    QFETCH(QString, kind);
    const QString plain = Fixtures::tone(kind);
    const Music music = musicOf(plain);
    QCOMPARE(int(music.status), int(MUSIC_BYTES_READ));
    QVERIFY(music.bytes.size() > 100 && music.bytes.size() <= QFile(plain).size());
    const QString tagged = Fixtures::copyTone(kind, m_folder.path(), kind + "-tagged");
    // Of several pages of Ogg, and of more than the room that others leave.
    tag(tagged, QString(20000, 'x'), Fixtures::jpeg(400, 400, 7));
    QVERIFY(QFile(tagged).size() > QFile(plain).size());
    QVERIFY(musicOf(tagged).bytes == music.bytes);
    tag(tagged, "short", QByteArray());
    QVERIFY(musicOf(tagged).bytes == music.bytes);
    std::int64_t count = 0;
    QCOMPARE(int(MeasureMusicBytes(QFile::encodeName(tagged).constData(), count)), int(MUSIC_BYTES_READ));
    QCOMPARE(count, std::int64_t(music.bytes.size()));
}

/// From the middle of the file on music is all there is, but for tables of MP4 behind it.
void TestMusicBytes::everyByteOfMusicCounts()
{
    QFETCH(QString, kind);
    const QByteArray bytes = Fixtures::readBytes(Fixtures::tone(kind));
    const QByteArray music = musicOf(Fixtures::tone(kind)).bytes;
    QByteArray changed = bytes;
    const int middle = changed.size() / 2;
    changed[middle] = char(~changed[middle]);
    const QString path = m_folder.filePath("changed." + kind);
    Fixtures::saveBytes(changed, path);
    const QByteArray found = musicOf(path).bytes;
    QCOMPARE(found.size(), music.size());
    QVERIFY(found != music);
}

void TestMusicBytes::tagsBehindAreNoMusic_data()
{
    QTest::addColumn<QString>("kind");
    for (const char* const kind : {"mp3", "aac", "ape", "flac"})
        QTest::newRow(kind) << QString(kind);
}

void TestMusicBytes::tagsBehindAreNoMusic()
{
    QFETCH(QString, kind);
    const QByteArray bytes = Fixtures::readBytes(Fixtures::tone(kind));
    const QByteArray music = musicOf(Fixtures::tone(kind)).bytes;
    const QByteArray ape = MediaBytes::apeTag(MediaBytes::apeItem("Title", QByteArray(500, '\xFF')), 1);
    const QByteArray old = MediaBytes::id3v1("Title", 3, 4);
    const QString path = m_folder.filePath("behind." + kind);
    for (const QByteArray& tags : {ape, old, ape + old}) {
        Fixtures::saveBytes(bytes + tags, path);
        QVERIFY(musicOf(path).bytes == music);
    }
}

/// Rather two files that are one for two than the other way round.
void TestMusicBytes::whatCannotBeTakenApartIsMusic()
{
    const QByteArray bytes = Fixtures::readBytes(Fixtures::tone("flac"));
    const QString path = m_folder.filePath("cut.flac");
    Fixtures::saveBytes(bytes.left(60), path);
    QVERIFY(musicOf(path).bytes == bytes.left(60));
    const QByteArray library = Fixtures::readBytes(Fixtures::tone("m4a"));
    const QString other = m_folder.filePath("cut.m4a");
    Fixtures::saveBytes(library.left(28), other);
    QVERIFY(musicOf(other).bytes == library.left(28));
}

void TestMusicBytes::whatHasNoMusicIsNamed()
{
    const QString path = m_folder.filePath("text.mp3");
    QCOMPARE(int(musicOf(path).status), int(MUSIC_BYTES_NO_FILE));
    QCOMPARE(int(musicOf(m_folder.path()).status), int(MUSIC_BYTES_NO_FILE));
    Fixtures::saveBytes("no music", path);
    QCOMPARE(int(musicOf(path).status), int(MUSIC_BYTES_NO_MUSIC));
    Fixtures::saveBytes(QByteArray(), path);
    QCOMPARE(int(musicOf(path).status), int(MUSIC_BYTES_NO_MUSIC));
    QCOMPARE(AudioFile::takeLog().size(), 4);
}

void TestMusicBytes::whoTakesTheBytesEndsIt()
{
    int calls = 0;
    const QByteArray name = QFile::encodeName(Fixtures::tone("wav"));
    const MusicBytesStatus status = ReadMusicBytes(name.constData(), [&calls](const char*, std::size_t) {
        ++calls;
        return false;
    });
    QCOMPARE(int(status), int(MUSIC_BYTES_ENDED));
    QCOMPARE(calls, 1);
}

QTEST_GUILESS_MAIN(TestMusicBytes)
#include "tst_musicbytes.moc"
