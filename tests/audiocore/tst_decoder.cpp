#include "audiocore/iaudiodecoder.h"
#include "audiofile.h"
#include "fixtures.h"

#include <QTemporaryDir>
#include <QtTest>

#include <new>

class TestDecoder : public QObject
{
    Q_OBJECT

private slots:
    void propertiesAreRight_data();
    void propertiesAreRight();
    void aTagDoesNotChangeTheLength();
    void operationsStandAtTheirSlots();
    void aClosedDecoderKnowsNothing();
};

void TestDecoder::propertiesAreRight_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<int>("format");
    QTest::addColumn<int>("milliseconds");
    const QHash<QString, int> codes = {
        {QStringLiteral("wav"), AUDIO_FORMAT_WAV},  {QStringLiteral("wma"), AUDIO_FORMAT_WMA},
        {QStringLiteral("mp3"), AUDIO_FORMAT_MP3},  {QStringLiteral("mp3novbr"), AUDIO_FORMAT_MP3},
        {QStringLiteral("aac"), AUDIO_FORMAT_AAC},  {QStringLiteral("m4a"), AUDIO_FORMAT_M4A},
        {QStringLiteral("alac"), AUDIO_FORMAT_M4A}, {QStringLiteral("ogg"), AUDIO_FORMAT_OGG},
        {QStringLiteral("opus"), AUDIO_FORMAT_OGG}, {QStringLiteral("oggflac"), AUDIO_FORMAT_OGG},
        {QStringLiteral("ape"), AUDIO_FORMAT_APE},  {QStringLiteral("flac"), AUDIO_FORMAT_FLAC}};
    for (auto code = codes.cbegin(); code != codes.cend(); ++code)
        QTest::newRow(qPrintable(code.key())) << code.key() << code.value() << 3000;
    for (const char* kind : {"mp3", "mp3novbr", "aac"})
        QTest::addRow("%s, a long song", kind)
            << QString::fromLatin1(kind) << codes.value(QLatin1String(kind)) << Fixtures::longSong;
}

void TestDecoder::propertiesAreRight()
{
    QFETCH(QString, kind);
    QFETCH(int, format);
    QFETCH(int, milliseconds);
    const AudioFile::Properties properties = AudioFile::properties(Fixtures::tone(kind, milliseconds));
    QCOMPARE(properties.format, format);
    QVERIFY2(qAbs(properties.duration - milliseconds) <= 50,
             qPrintable(QString::number(properties.duration)));
    QCOMPARE(properties.sampleRate, kind == QLatin1String("opus") ? 48000 : 44100);
    if (kind != QLatin1String("ape")) // silence takes nearly none
        QVERIFY2(properties.bitRate >= 30000 && properties.bitRate <= 3000000,
                 qPrintable(QString::number(properties.bitRate)));
}

void TestDecoder::aTagDoesNotChangeTheLength()
{
    QTemporaryDir folder;
    const QByteArray cover = Fixtures::jpeg(600, 600, 1);
    for (const QString& kind : Fixtures::formats() + Fixtures::furtherKinds()) {
        const QString path = Fixtures::copyTone(kind, folder.path());
        const AudioFile::Properties before = AudioFile::properties(path);
        QCOMPARE(AudioFile::write(path, {{0, QStringLiteral("Title")}}, &cover), 0);
        const AudioFile::Properties after = AudioFile::properties(path);
        QVERIFY2(qAbs(after.duration - before.duration) <= 1, qPrintable(kind));
    }
}

void TestDecoder::operationsStandAtTheirSlots()
{
    IAudioDecoder* decoder = CreateDecoder();
    const auto number = [decoder](int slot) {
        return reinterpret_cast<int (*)(IAudioDecoder*)>((*reinterpret_cast<void***>(decoder))[slot])(
            decoder);
    };
    const std::u32string path = Fixtures::tone(QStringLiteral("wav")).toStdU32String();
    reinterpret_cast<int (*)(IAudioDecoder*, const char32_t*)>((*reinterpret_cast<void***>(decoder))[0])(
        decoder, path.c_str());
    QCOMPARE(number(3), 3000);
    QCOMPARE(number(4), int(AUDIO_FORMAT_WAV));
    QCOMPARE(number(5), 44100);
    QCOMPARE(number(8), 1411200);
    number(2);
    QCOMPARE(number(3), 0);
    ::operator delete(decoder);
}

void TestDecoder::aClosedDecoderKnowsNothing()
{
    IAudioDecoder* decoder = CreateDecoder();
    QCOMPARE(decoder->GetFormat(), int(AUDIO_FORMAT_UNKNOWN));
    QCOMPARE(decoder->GetDuration(), 0);
    decoder->Open(Fixtures::tone(QStringLiteral("flac")).toStdU32String().c_str());
    QCOMPARE(decoder->GetFormat(), int(AUDIO_FORMAT_FLAC));
    decoder->Close();
    QCOMPARE(decoder->GetFormat(), int(AUDIO_FORMAT_UNKNOWN));
    QCOMPARE(decoder->GetBitrate(), 0);
    ::operator delete(decoder);
}

QTEST_GUILESS_MAIN(TestDecoder)
#include "tst_decoder.moc"
