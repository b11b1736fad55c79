#include "audiofile.h"
#include "fixtures.h"
#include "mp4fixture.h"
#include "mp4judges.h"
#include "playedandtold.h"

#include <QTemporaryDir>
#include <QtTest>

using Playing::contentOf;

namespace {
/// The bits that are written as zeros and ones, with zeros up to so many bytes.
QByteArray bytesOf(const QByteArray& written, int size)
{
    QByteArray bytes(size, '\0');
    int position = 0;
    for (const char bit : written) {
        if (bit == '1')
            bytes[position / 8] = char(bytes.at(position / 8) | 0x80 >> position % 8);
        position += bit == ' ' ? 0 : 1;
    }
    return bytes;
}

QByteArray bitsOf(const QByteArray& bytes)
{
    QByteArray bits;
    for (const char byte : bytes)
        for (int bit = 7; bit >= 0; --bit)
            bits += quint8(byte) >> bit & 1 ? '1' : '0';
    return bits;
}

/// The frame with a second band that adds nothing: filling in front of its end.
QByteArray withSecondBand(const QByteArray& frame)
{
    constexpr int filled = 20;
    QByteArray bits = bitsOf(frame);
    bits.truncate(bits.lastIndexOf("111"));
    bits += "110"
            "1111" +
            bitsOf(QByteArray(1, char(filled - 14))) + "1101" + QByteArray(filled * 8 - 4, '0') + "111";
    return bytesOf(bits, (bits.size() + 7) / 8);
}

/// The same of all frames of a raw stream.
QByteArray withSecondBands(const QByteArray& stream)
{
    constexpr int headSize = 7;
    QByteArray changed;
    for (int at = 0; at + headSize <= stream.size();) {
        QByteArray head = stream.mid(at, headSize);
        const int size = (head.at(3) & 3) << 11 | quint8(head.at(4)) << 3 | quint8(head.at(5)) >> 5;
        const QByteArray frame = withSecondBand(stream.mid(at + headSize, size - headSize));
        const int newSize = frame.size() + headSize;
        head[3] = char((head.at(3) & ~3) | newSize >> 11);
        head[4] = char(newSize >> 3);
        head[5] = char((head.at(5) & 31) | (newSize & 7) << 5);
        changed += head + frame;
        at += size;
    }
    return changed;
}

/// The song with another configuration of its decoder, written in bits.
QByteArray configured(QByteArray song, const QByteArray& bits)
{
    const QByteArray head("\x05\x80\x80\x80\x05", 5);
    return song.replace(song.indexOf(head, song.indexOf("esds")) + head.size(), 5, bytesOf(bits, 5));
}

/// The song whose description says so of its rate.
QByteArray described(QByteArray song, quint16 rate)
{
    return song.replace(song.indexOf("mp4a", song.indexOf("stsd")) + 28, 2, Mp4::number(rate).mid(2));
}

bool near(double one, double other, double part)
{
    return qAbs(one - other) <= qMax(one, other) * part;
}
} // namespace

/// Whatever an MP4 file holds, its length and its rates are those that others tell.
class TestMp4Sound : public QObject
{
    Q_OBJECT

private slots:
    void isToldAsByOthers_data();
    void isToldAsByOthers();
    void aSecondBandDoublesTheRate_data();
    void aSecondBandDoublesTheRate();
    void everyKindIsPlayedAndTold_data();
    void everyKindIsPlayedAndTold();
    void theFirstTrackOfSoundCounts_data();
    void theFirstTrackOfSoundCounts();
    void lengthsThatNobodySaysAreCounted_data();
    void lengthsThatNobodySaysAreCounted();

private:
    QString file(const QByteArray& content) const;
    QString made(const QString& name, const QStringList& arguments) const;
    QString ofTwoBands() const;
    void add(const char* name, const QString& path);
    void addMade(const char* name, const char* options);

    QTemporaryDir m_folder;
    QHash<QString, Mp4Judges::Said> m_others; ///< by mutagen, of all songs at once
    mutable int m_files = 0;
};

QString TestMp4Sound::file(const QByteArray& content) const
{
    const QString path = m_folder.filePath(QStringLiteral("%1.m4a").arg(++m_files));
    Playing::setContent(path, content);
    return path;
}

QString TestMp4Sound::made(const QString& name, const QStringList& arguments) const
{
    const QString path = m_folder.filePath(name);
    QProcess ffmpeg;
    ffmpeg.start("ffmpeg", QStringList{"-v", "error", "-y"} + arguments + QStringList{path});
    if (!ffmpeg.waitForFinished(patience) || ffmpeg.exitCode() != 0)
        qFatal("%s: %s", qUtf8Printable(name), ffmpeg.readAllStandardError().constData());
    return path;
}

/// A song that doubles its rate by a second band and says so nowhere in front.
QString TestMp4Sound::ofTwoBands() const
{
    const QString stream = made("plain.aac", {"-i", Fixtures::tone("mp4half"), "-c", "copy"});
    const QString changed = m_folder.filePath("second.aac");
    Playing::setContent(changed, withSecondBands(contentOf(stream)));
    return made("unsaid.m4a", {"-i", changed, "-c", "copy"});
}

void TestMp4Sound::add(const char* name, const QString& path)
{
    QTest::newRow(name) << path;
    m_others.insert(path, {});
}

void TestMp4Sound::addMade(const char* name, const char* options)
{
    add(name, made(QStringLiteral("%1.m4a").arg(++m_files),
                   QStringList{"-i", Fixtures::tone("wav")} +
                       QString::fromLatin1(options).split(QLatin1Char(' '))));
}

void TestMp4Sound::isToldAsByOthers_data()
{
    QTest::addColumn<QString>("path");
    for (const QString& kind : Fixtures::mp4Kinds() + QStringList{"m4a", "alac", "mp4half"})
        add(qPrintable(kind), Fixtures::tone(kind));
    addMade("FLAC of a high rate", "-ar 96000 -c:a flac -strict -2 -f mp4");
    addMade("ALAC of a high rate", "-ar 96000 -c:a alac");
    addMade("FLAC, all tables in front", "-c:a flac -strict -2 -movflags +faststart -f mp4");
    addMade("Opus of another rate", "-ar 16000 -c:a libopus -f mp4");
    addMade("AC-3 of a third rate", "-ar 32000 -c:a ac3 -f mp4");
    addMade("MP3", "-c:a libmp3lame -f mp4");
    addMade("Vorbis", "-c:a libvorbis -f mp4");
    addMade("TrueHD", "-ar 48000 -c:a truehd -strict -2 -f mp4");
    addMade("AAC, as QuickTime has it", "-c:a aac -f mov -brand M4A");
    addMade("ALAC, as QuickTime has it", "-c:a alac -f mov");
    addMade("samples", "-c:a pcm_s16le -f mov");
    addMade("samples of a high rate", "-ar 192000 -c:a pcm_s24be -f mov");
    addMade("fragments", "-c:a aac -movflags +empty_moov -frag_duration 500000");
    addMade("fragments from their own places",
            "-c:a aac -movflags +empty_moov+default_base_moof -frag_duration 500000");
    addMade("fragments with an index each",
            "-c:a flac -strict -2 -movflags +dash -frag_duration 500000 -f mp4");
    addMade("a first part and fragments", "-c:a aac -movflags +frag_keyframe -frag_duration 900000");
    m_others = Mp4Judges::mutagen(m_others.keys());
}

void TestMp4Sound::isToldAsByOthers()
{
    constexpr double delay = 70; // of encoders, which some take off
    QFETCH(QString, path);
    const Mp4Judges::Said one = Mp4Judges::ffmpeg(path);
    const Mp4Judges::Said other = m_others.value(path);
    const AudioFile::Properties own = AudioFile::properties(path);
    QVERIFY(one.read && other.read);
    QCOMPARE(own.format, 4);
    QCOMPARE(own.sampleRate, one.rate);
    QVERIFY2(qAbs(own.duration - one.milliseconds) < delay, qPrintable(QString::number(own.duration)));
    // What others say of fragments is a guess, another one in each version. The packets may have a delay
    // before what is heard.
    const double weighed = double(Sound::bytesOf(path)) * 8 * 1000 / own.duration;
    QVERIFY2(near(own.bitRate, weighed, 0.015),
             qPrintable(QStringLiteral("%1, not %2").arg(own.bitRate).arg(weighed)));
}

void TestMp4Sound::aSecondBandDoublesTheRate_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("rate");
    const QByteArray plain = contentOf(Fixtures::tone("mp4half"));
    const QByteArray simple = "00010 0111 0010 000";
    const auto add = [this, &plain](const char* name, const QByteArray& bits, int rate) {
        QTest::newRow(name) << file(configured(plain, bits)) << rate;
    };
    add("in front", "00101 0111 0010 0100 00010 000", 44100);
    add("in front, with stereo from it", "11101 0111 0001 0100 00010 000", 44100);
    add("in front, and no wider", "00101 0111 0010 0111 00010 000", 22050);
    add("behind", simple + "01010110111 00101 1 0100", 44100);
    add("behind, and not there", simple + "01010110111 00101 0", 22050);
    add("unsaid, and not there", simple, 22050);
    QTest::newRow("unsaid, and not there, whatever the description says")
        << file(described(configured(plain, simple), 44100)) << 22050;
    const QString unsaid = ofTwoBands();
    QTest::newRow("unsaid") << unsaid << 44100;
    QTest::newRow("unsaid even by the description") << file(described(contentOf(unsaid), 22050)) << 44100;
}

void TestMp4Sound::aSecondBandDoublesTheRate()
{
    QFETCH(QString, path);
    QFETCH(int, rate);
    QCOMPARE(AudioFile::properties(path).sampleRate, rate);
    QCOMPARE(Mp4Judges::ffmpeg(path).rate, rate);
}

void TestMp4Sound::everyKindIsPlayedAndTold_data()
{
    QTest::addColumn<QString>("path");
    for (const QString& kind : Fixtures::mp4Kinds() + QStringList{"mp4half", "mp4fragments"})
        QTest::newRow(qPrintable(kind)) << Fixtures::tone(kind);
    QTest::newRow("two bands") << ofTwoBands();
    QTest::newRow("two bands, as the head says")
        << file(configured(contentOf(Fixtures::tone("mp4half")), "00101 0111 0010 0100 00010 000"));
}

void TestMp4Sound::everyKindIsPlayedAndTold()
{
    QFETCH(QString, path);
    playedAndTold(path);
}

void TestMp4Sound::theFirstTrackOfSoundCounts_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("rate");
    const QStringList moving{"-f", "lavfi", "-i", "testsrc=s=32x32:d=3:r=5", "-i", Fixtures::tone("m4a")};
    QTest::newRow("behind moving pictures")
        << made("moving.mp4", moving + QStringList{"-map", "0", "-map", "1", "-c:v", "mpeg4", "-c:a", "copy"})
        << 44100;
    QTest::newRow("before another one")
        << made("two.m4a", QStringList{"-i", Fixtures::tone("m4a"), "-i", Fixtures::tone("mp4half"), "-map",
                                       "0", "-map", "1", "-c", "copy"})
        << 44100;
    const QByteArray track = Mp4::track(Mp4::table("stco", 0, QByteArray()));
    QByteArray silent = track;
    silent.replace(silent.indexOf("\xAC\x44", silent.indexOf("mp4a")), 2, QByteArray(2, '\0'));
    silent.replace(silent.indexOf("mdhd") + 16, 4, QByteArray(4, '\0'));
    QTest::newRow("behind one without a rate") << file(Mp4::file(silent + track)) << 44100;
    QByteArray foreign = track;
    QTest::newRow("coded in something new") << file(Mp4::file(foreign.replace("mp4a", "abcd"))) << 44100;
}

void TestMp4Sound::theFirstTrackOfSoundCounts()
{
    QFETCH(QString, path);
    QFETCH(int, rate);
    const AudioFile::Properties own = AudioFile::properties(path);
    QCOMPARE(own.sampleRate, rate);
    QVERIFY(qAbs(own.duration - 3000) < 100);
    if (const Mp4Judges::Said one = Mp4Judges::ffmpeg(path); one.bitRate > 0)
        QVERIFY2(near(own.bitRate, one.bitRate, 0.02), qPrintable(QString::number(own.bitRate)));
}

void TestMp4Sound::lengthsThatNobodySaysAreCounted_data()
{
    QTest::addColumn<QByteArray>("content");
    const QByteArray plain = contentOf(Fixtures::tone("m4a"));
    const auto said = [&plain](const char* atom, int place, const QByteArray& length) {
        return QByteArray(plain).replace(plain.indexOf(atom) + 4 + place, length.size(), length);
    };
    QTest::newRow("zero") << said("mdhd", 16, Mp4::number(0));
    QTest::newRow("all ones") << said("mdhd", 16, Mp4::number(0xFFFFFFFF));
}

void TestMp4Sound::lengthsThatNobodySaysAreCounted()
{
    QFETCH(QByteArray, content);
    QCOMPARE(AudioFile::properties(file(content)).duration,
             AudioFile::properties(Fixtures::tone("m4a")).duration);
}

QTEST_GUILESS_MAIN(TestMp4Sound)
#include "tst_mp4sound.moc"
