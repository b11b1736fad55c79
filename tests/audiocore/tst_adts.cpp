// Raw MPEG audio that does not begin with its first frame, or whose frames say odd things in their headers.
#include "audiocore/iaudiodecoder.h"
#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "fixtures.h"
#include "mediabytes.h"
#include "sound.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <functional>

namespace {
constexpr int second = 1000;
constexpr int nearby = 64 * 1024;
constexpr int farthest = 1024 * 1024;

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray tone(const QString& kind)
{
    return contentOf(Fixtures::tone(kind, second));
}

/// Without the tag that a tone may have in front.
QByteArray framesOf(const QString& kind)
{
    const QByteArray bytes = tone(kind);
    return bytes.mid(qMax(0, bytes.indexOf(kind == "mp3" ? "\xFF\xFB" : "\xFF\xF1")));
}

using Change = std::function<void(QByteArray&)>;

/// The stream with the heads of some of its frames changed.
QByteArray changed(int begin, int end, const Change& change)
{
    QByteArrayList frames = MediaBytes::adtsFrames(tone("aac"));
    for (int i = begin; i < qMin(end, frames.size()); ++i)
        change(frames[i]);
    return frames.join();
}

void setBits(QByteArray& frame, int place, int bits)
{
    frame[place] = char(frame.at(place) | bits);
}

/// With a checksum behind the head.
void protect(QByteArray& frame)
{
    const int size = frame.size() + 2;
    frame[1] = char(frame.at(1) & ~1);
    frame[3] = char((frame.at(3) & ~3) | size >> 11);
    frame[4] = char(size >> 3);
    frame[5] = char((frame.at(5) & 0x1F) | (size & 7) << 5);
    frame.insert(7, QByteArray(2, '\0'));
}

void takeChannelsAway(QByteArray& frame)
{
    frame[2] = char(frame.at(2) & ~1);
    frame[3] = char(frame.at(3) & 0x3F);
}

void takeRateAway(QByteArray& frame)
{
    setBits(frame, 2, 0x3C);
}
} // namespace

class TestAdts : public QObject
{
    Q_OBJECT

private slots:
    void framesThatStartLateAreFound_data();
    void framesThatStartLateAreFound();
    void framesThatStartFarOffAreNot_data();
    void framesThatStartFarOffAreNot();
    void oddHeadsAreRead_data();
    void oddHeadsAreRead();
    void framesWithoutARateAreNone();
    void whatLooksLikeATagBetweenTheFramesIsNone();

private:
    QString file(const QString& suffix, const QByteArray& bytes) const;

    QTemporaryDir m_folder;
};

QString TestAdts::file(const QString& suffix, const QByteArray& bytes) const
{
    const QString path = m_folder.filePath("song." + suffix);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qUtf8Printable(path));
    return path;
}

void TestAdts::framesThatStartLateAreFound_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QByteArray>("before");
    for (const char* kind : {"aac", "mp3"}) {
        for (const int size : {1, 5000, nearby - 1, nearby, farthest - 1}) {
            QTest::addRow("%s behind %d zeros", kind, size)
                << QString::fromLatin1(kind) << QByteArray(size, '\0');
            QTest::addRow("%s behind %d bytes like heads", kind, size)
                << QString::fromLatin1(kind) << QByteArray(size, '\xFF');
        }
        const QByteArray tag = MediaBytes::id3v2(MediaBytes::frame("TPE1", QByteArray("\0Artist", 7)));
        QTest::addRow("%s behind a tag and zeros", kind)
            << QString::fromLatin1(kind) << tag + QByteArray(3000, '\0');
    }
}

void TestAdts::framesThatStartLateAreFound()
{
    QFETCH(QString, kind);
    QFETCH(QByteArray, before);
    const QByteArray music = framesOf(kind);
    const AudioFile::Properties wanted = AudioFile::properties(file(kind, music));
    const QString path = file(kind, before + music);
    const AudioFile::Properties properties = AudioFile::properties(path);
    QCOMPARE(properties.format, wanted.format);
    QCOMPARE(properties.duration, wanted.duration);
    QCOMPARE(properties.sampleRate, wanted.sampleRate);
    QCOMPARE(properties.bitRate, wanted.bitRate);
    const QString artist = before.startsWith("ID3") ? QStringLiteral("Artist") : QString();
    QCOMPARE(AudioFile::read(path).texts.value(TAG_ARTIST), artist);
    const QByteArray sound = Sound::sumOf(path);
    QCOMPARE(AudioFile::write(path, {{TAG_TITLE, "New"}}), 0);
    QCOMPARE(AudioFile::read(path).texts.value(TAG_TITLE), "New");
    QCOMPARE(AudioFile::read(path).texts.value(TAG_ARTIST), artist);
    QVERIFY(contentOf(path).endsWith(artist.isEmpty() ? before + music : QByteArray(3000, '\0') + music));
    QCOMPARE(Sound::sumOf(path), sound);
}

void TestAdts::framesThatStartFarOffAreNot_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const QByteArrayList frames = MediaBytes::adtsFrames(tone("aac"));
    QTest::newRow("farther than is looked") << QByteArray(farthest, '\0') + frames.join();
    // What is far off may look like one by chance.
    const QByteArray other(100, '\0');
    QTest::newRow("three in a row") << QByteArray(nearby, '\0') + frames.mid(0, 3).join() + other;
}

void TestAdts::framesThatStartFarOffAreNot()
{
    QFETCH(QByteArray, bytes);
    QCOMPARE(AudioFile::properties(file("aac", bytes)).format, int(AUDIO_FORMAT_UNKNOWN));
    QVERIFY(AudioFile::write(file("aac", bytes), {{TAG_TITLE, "New"}}) != 0);
    QVERIFY(contentOf(file("aac", bytes)) == bytes);
}

void TestAdts::oddHeadsAreRead_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("frames");
    const int all = MediaBytes::adtsFrames(tone("aac")).size();
    const auto setLayer = [](QByteArray& frame) { setBits(frame, 1, 2); };
    const auto setVersion = [](QByteArray& frame) { setBits(frame, 1, 8); };
    const auto setProfile = [](QByteArray& frame) { setBits(frame, 2, 0x80); };
    QTest::newRow("protected") << changed(0, all, protect) << all;
    QTest::newRow("no channels") << changed(0, all, takeChannelsAway) << all;
    QTest::newRow("channels in the first frame") << tone("aacquad") << all;
    QTest::newRow("a layer") << changed(0, all, setLayer) << all;
    QTest::newRow("the older version") << changed(0, all, setVersion) << all;
    QTest::newRow("the older version now and then") << changed(3, 20, setVersion) << all;
    QTest::newRow("another profile now and then") << changed(3, 20, setProfile) << all;
    QTest::newRow("no rate in the first one") << changed(0, 1, takeRateAway) << all - 1;
    QTest::newRow("the first one cut") << tone("aac").mid(20) << all - 1;
    QByteArrayList damaged = MediaBytes::adtsFrames(tone("aac"));
    damaged.insert(9, QByteArray(300, '\5'));
    QTest::newRow("other bytes between") << damaged.join() << all;
}

void TestAdts::oddHeadsAreRead()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, frames);
    constexpr int samples = 1024;
    constexpr int rate = 44100;
    const QString path = file("aac", bytes);
    const AudioFile::Properties properties = AudioFile::properties(path);
    QCOMPARE(properties.format, int(AUDIO_FORMAT_AAC));
    QCOMPARE(properties.sampleRate, rate);
    QCOMPARE(properties.duration, frames * samples * second / rate);
    const QByteArray sound = Sound::sumOf(path);
    QCOMPARE(AudioFile::write(path, {{TAG_TITLE, "New"}}), 0);
    QCOMPARE(AudioFile::read(path).texts.value(TAG_TITLE), "New");
    QVERIFY(contentOf(path).endsWith(bytes));
    QCOMPARE(Sound::sumOf(path), sound);
}

void TestAdts::framesWithoutARateAreNone()
{
    const QByteArray bytes = changed(0, second, takeRateAway);
    QCOMPARE(AudioFile::properties(file("aac", bytes)).format, int(AUDIO_FORMAT_UNKNOWN));
}

/// It is neither read nor written into: an edit shows nothing of it.
void TestAdts::whatLooksLikeATagBetweenTheFramesIsNone()
{
    const QByteArrayList frames = MediaBytes::adtsFrames(tone("aac"));
    const QByteArray tag = MediaBytes::id3v2(MediaBytes::frame("TIT2", QByteArray("\0Title", 6)));
    const QByteArray music = frames.mid(0, 5).join() + tag + frames.mid(5).join();
    const QString path = file("aac", music);
    QVERIFY(AudioFile::read(path).texts.isEmpty());

    const QHash<int, QString> artist = {{TAG_ARTIST, QStringLiteral("Artist")}};
    QCOMPARE(AudioFile::write(path, artist), 0);
    QCOMPARE(AudioFile::read(path).texts, artist);
    QVERIFY(contentOf(path).startsWith("ID3"));
    QVERIFY(contentOf(path).endsWith(music));
}

QTEST_GUILESS_MAIN(TestAdts)
#include "tst_adts.moc"
