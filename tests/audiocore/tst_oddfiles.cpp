// Files of kinds that other programs make and we half know: a save of theirs does what it says.
#include "audiofile.h"
#include "base/checkedmath.h"
#include "fixtures.h"
#include "sound.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QtEndian>
#include <QtTest>

#include <functional>

namespace checked = base::checked;

class TestOddFiles : public QObject
{
    Q_OBJECT

private slots:
    void aSaveDoesWhatItSays_data();
    void aSaveDoesWhatItSays();
    void ratesThatNoMusicHasAreNone_data();
    void ratesThatNoMusicHasAreNone();
    void aPositionTooLargeForMillisecondsIsBounded();
    void numbersThatDoNotFitAreTheNearest();

private:
    QString path(const QString& name) const { return m_folder.filePath(name); }
    QString encoded(const QString& name, const QStringList& options) const;

    QTemporaryDir m_folder;
};

namespace {
QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void setContent(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qUtf8Printable(path));
}

void run(const QStringList& arguments)
{
    QProcess ffmpeg;
    ffmpeg.start("ffmpeg", QStringList{"-v", "error", "-y"} + arguments);
    if (!ffmpeg.waitForFinished(patience))
        qFatal("ffmpeg does not end");
}

QByteArray little32(quint32 number)
{
    QByteArray bytes(4, '\0');
    qToLittleEndian(number, bytes.data());
    return bytes;
}

using Change = std::function<QByteArray(const QByteArray&)>;

/// Ways in which programs leave the chunks of a WAV file.
QHash<QString, Change> wavs()
{
    const auto sized = [](quint32 size) {
        return [size](QByteArray wav) {
            const int data = wav.indexOf("data");
            return wav.replace(4, 4, little32(size)).replace(data + 4, 4, little32(size));
        };
    };
    const auto before = [](const QByteArray& chunk) {
        return [chunk](QByteArray wav) { return wav.insert(wav.indexOf("data"), chunk); };
    };
    return {{"streamed, sizes of zero", sized(0)},
            {"streamed, sizes of all ones", sized(0xFFFFFFFF)},
            {"an empty chunk before the sound", before("abcd" + little32(0))},
            {"an empty list before the sound", before("LIST" + little32(0))},
            {"a list of unknown kind", before("LIST" + little32(8) + "abcdefgh")},
            {"a header and no sound yet",
             [](QByteArray wav) { return wav.left(wav.indexOf("data")) + "data" + little32(0); }},
            {"an empty chunk and bytes behind the sound",
             [](QByteArray wav) { return wav + "abcd" + little32(0) + QByteArray(1000, '\1'); }}};
}
} // namespace

QString TestOddFiles::encoded(const QString& name, const QStringList& options) const
{
    run(QStringList{"-i", Fixtures::tone("wav", 1000)} + options + QStringList{path(name)});
    return path(name);
}

void TestOddFiles::aSaveDoesWhatItSays_data()
{
    QTest::addColumn<QString>("file");
    const auto add = [this](const char* name, const QString& file, const QStringList& options) {
        QTest::newRow(name) << encoded(file, options);
    };
    add("FLAC in MP4", "flac.m4a", {"-c:a", "flac", "-strict", "-2", "-f", "mp4"});
    add("Opus in MP4", "opus.m4a", {"-c:a", "libopus", "-ar", "48000", "-f", "mp4"});
    add("AC-3 in MP4", "ac3.m4a", {"-c:a", "ac3", "-f", "mp4"});
    add("E-AC-3 in MP4", "eac3.m4a", {"-c:a", "eac3", "-f", "mp4"});
    add("ADPCM", "adpcm.wav", {"-c:a", "adpcm_ms"});
    add("GSM", "gsm.wav", {"-c:a", "libgsm_ms", "-ar", "8000", "-ac", "1"});
    add("Speex", "speex.ogg", {"-c:a", "libspeex", "-ar", "16000", "-ac", "1"});
    const QByteArray wav = contentOf(Fixtures::tone("wav", 1000));
    const QHash<QString, Change> changes = wavs();
    for (auto change = changes.begin(); change != changes.end(); ++change) {
        const QString file = path(change.key() + ".wav");
        setContent(file, change.value()(wav));
        QTest::newRow(qPrintable(change.key())) << file;
    }
    const QByteArray aac = contentOf(Fixtures::tone("aac", 1000));
    setContent(path("late.aac"), QByteArray(5000, '\0') + aac);
    QTest::newRow("frames that start late") << path("late.aac");
}

void TestOddFiles::aSaveDoesWhatItSays()
{
    QFETCH(QString, file);
    const QByteArray before = contentOf(file);
    const QByteArray sound = Sound::sumOf(file);
    QVERIFY(!before.isEmpty());
    AudioFile::takeLog();
    if (AudioFile::write(file, {{0, QStringLiteral("New")}}) == 0) {
        QCOMPARE(AudioFile::read(file).texts.value(0), QStringLiteral("New"));
        QCOMPARE(Sound::sumOf(file), sound);
        qInfo("saved");
    } else {
        const QStringList saving = AudioFile::takeLog().filter("not saved");
        QCOMPARE(saving.size(), 1);
        QVERIFY(contentOf(file) == before);
        qInfo("%s", qPrintable(saving.first()));
    }
}

void TestOddFiles::ratesThatNoMusicHasAreNone_data()
{
    QTest::addColumn<quint32>("rate");
    QTest::addColumn<bool>("isMusic");
    QTest::newRow("none") << 0u << false;
    QTest::newRow("the highest") << 768000u << true;
    QTest::newRow("higher") << 768001u << false;
    QTest::newRow("the highest number") << 2147483647u << false;
}

void TestOddFiles::ratesThatNoMusicHasAreNone()
{
    QFETCH(quint32, rate);
    QFETCH(bool, isMusic);
    const QString file = path("rate.wav");
    setContent(file, contentOf(Fixtures::tone("wav")).replace(24, 4, little32(rate)));
    const AudioFile::Properties properties = AudioFile::properties(file);
    QCOMPARE(properties.sampleRate, isMusic ? int(rate) : 0);
    QCOMPARE(properties.format, isMusic ? 0 : -1);
}

void TestOddFiles::aPositionTooLargeForMillisecondsIsBounded()
{
    QByteArray ogg = contentOf(Fixtures::tone("oggflac"));
    const int streamInfo = ogg.indexOf("fLaC") + 8;
    ogg.replace(streamInfo + 14, 4, QByteArray(4, '\0')); // the length stays unsaid, save its highest bits
    ogg[streamInfo + 13] = char(ogg[streamInfo + 13] & 0xF0);
    const int position = ogg.lastIndexOf("OggS") + 6;
    ogg.replace(position, 8, QByteArray(7, char(0xFF)) + '\x7F');
    setContent(path("position.ogg"), ogg);
    QCOMPARE(AudioFile::properties(path("position.ogg")).duration, std::numeric_limits<int>::max());
}

void TestOddFiles::numbersThatDoNotFitAreTheNearest()
{
    QCOMPARE(checked::sum(checked::most, 1), checked::most);
    QCOMPARE(checked::sum(checked::least, -1), checked::least);
    QCOMPARE(checked::sum(-5, 3), std::int64_t(-2));
    QCOMPARE(checked::product(checked::most / 2, 3), checked::most);
    QCOMPARE(checked::product(checked::least / 2, 3), checked::least);
    QCOMPARE(checked::product(7, 0), std::int64_t(0));
    QCOMPARE(checked::scaled(44100, 1000, 44100), std::int64_t(1000));
    QCOMPARE(checked::scaled(checked::most, 1000, 1000), checked::most / 1000 * 1000 + checked::most % 1000);
    QCOMPARE(checked::scaled(checked::most, 1000, 3), checked::most);
    QCOMPARE(checked::scaled(-44100, 1000, 88200), std::int64_t(-500));
    QCOMPARE(checked::scaled(1, 1000, 0), std::int64_t(0));
}

QTEST_GUILESS_MAIN(TestOddFiles)
#include "tst_oddfiles.moc"
