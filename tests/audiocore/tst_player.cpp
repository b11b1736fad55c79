#include "audiocore/iaudiodecoder.h"
#include "audiocore/iaudioplayer.h"
#include "audiofile.h"
#include "fixtures.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <memory>

namespace {
constexpr int samplesASecond = 44100;

struct Freed
{
    void operator()(IAudioPlayer* player) const { DestroyPlayer(player); }
};
using Player = std::unique_ptr<IAudioPlayer, Freed>;

Player opened(const QString& path)
{
    Player player(CreatePlayer());
    player->Open(path.toStdU32String().c_str());
    return player;
}

void chooseOutput(const QString& output)
{
    qputenv("MELODRIFT_AUDIO_OUTPUT", output.toLocal8Bit());
}

/// The file's samples, mono.
QVector<float> samplesOf(const QString& path)
{
    QProcess ffmpeg;
    ffmpeg.start(QStringLiteral("ffmpeg"), {"-v", "error", "-i", path, "-f", "f32le", "-ac", "1", "-ar",
                                            QString::number(samplesASecond), "-"});
    if (!ffmpeg.waitForFinished(60000) || ffmpeg.exitCode() != 0)
        qFatal("ffmpeg cannot read %s: %s", qUtf8Printable(path), ffmpeg.readAllStandardError().constData());
    const QByteArray bytes = ffmpeg.readAllStandardOutput();
    QVector<float> samples(bytes.size() / int(sizeof(float)));
    memcpy(samples.data(), bytes.constData(), size_t(samples.size()) * sizeof(float));
    return samples;
}

double levelOf(const QVector<float>& samples, int from, int to)
{
    double sum = 0;
    for (int i = from; i < to; ++i)
        sum += double(samples.at(i)) * double(samples.at(i));
    return std::sqrt(sum / qMax(1, to - from));
}

bool finishes(IAudioPlayer& player, int milliseconds = 10000)
{
    return QTest::qWaitFor([&player] { return player.GetState() == PLAYER_STATE_FINISHED; }, milliseconds);
}
} // namespace

class TestPlayer : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void operationsStandAtTheirSlots();
    void aSongSoundsAsItsFile_data();
    void aSongSoundsAsItsFile();

private:
    QString path(const QString& name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
};

void TestPlayer::init()
{
    chooseOutput("null");
}

void TestPlayer::operationsStandAtTheirSlots()
{
    IAudioPlayer* player = CreatePlayer();
    void** slots_ = *reinterpret_cast<void***>(player);
    const auto call = [player, slots_](int slot) {
        return reinterpret_cast<int (*)(IAudioPlayer*)>(slots_[slot])(player);
    };
    const std::u32string song = Fixtures::tone(QStringLiteral("wav")).toStdU32String();
    QCOMPARE(reinterpret_cast<int (*)(IAudioPlayer*, const char32_t*)>(slots_[0])(player, song.c_str()), 0);
    QCOMPARE(call(8), 3000);
    QCOMPARE(call(7), int(PLAYER_STATE_PAUSED));
    QCOMPARE(reinterpret_cast<int (*)(IAudioPlayer*, std::uint64_t)>(slots_[10])(player, 2800), 0);
    QCOMPARE(call(9), 2800);
    QCOMPARE(call(4), 0);
    QCOMPARE(call(7), int(PLAYER_STATE_PLAYING));
    QCOMPARE(call(5), 0);
    QCOMPARE(call(7), int(PLAYER_STATE_PAUSED));
    call(4);
    QTRY_COMPARE(call(7), 4);
    DestroyPlayer(player);
}

void TestPlayer::aSongSoundsAsItsFile_data()
{
    QTest::addColumn<QString>("kind");
    for (const QString& kind : Fixtures::formats() + Fixtures::furtherKinds())
        QTest::newRow(qPrintable(kind)) << kind;
}

void TestPlayer::aSongSoundsAsItsFile()
{
    QFETCH(QString, kind);
    const QString song = Fixtures::tone(kind);
    const QString heard = path(kind + ".wav");
    chooseOutput("pcm:" + heard);
    Player player = opened(song);
    QCOMPARE(player->GetState(), int(PLAYER_STATE_PAUSED));
    player->Seek(0);
    player->Play();
    QVERIFY(finishes(*player));
    QCOMPARE(player->GetPosition(), player->GetDuration());
    player.reset();
    const QVector<float> is = samplesOf(heard);
    const QVector<float> should = samplesOf(song);
    QVERIFY(should.size() >= 2900 * samplesASecond / 1000);
    QCOMPARE(is.size(), should.size());
    QVERIFY(qAbs(levelOf(is, 0, is.size()) - levelOf(should, 0, should.size())) < 0.001);
    if (kind != QLatin1String("ape")) // that fixture is silent
        QVERIFY(levelOf(is, 0, is.size()) > 0.1);
}

QTEST_GUILESS_MAIN(TestPlayer)
#include "tst_player.moc"
