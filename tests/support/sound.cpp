#include "sound.h"

#include <QProcess>

#include <cmath>
#include <cstring>
#include <limits>

QVector<float> Sound::samplesOf(const QString& path)
{
    QProcess ffmpeg;
    ffmpeg.start(QStringLiteral("ffmpeg"),
                 {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-i"), path,
                  QStringLiteral("-f"), QStringLiteral("f32le"), QStringLiteral("-ac"), QStringLiteral("1"),
                  QStringLiteral("-ar"), QString::number(samplesASecond), QStringLiteral("-")});
    if (!ffmpeg.waitForFinished(600000) || ffmpeg.exitCode() != 0)
        qFatal("ffmpeg cannot read %s: %s", qUtf8Printable(path), ffmpeg.readAllStandardError().constData());
    const QByteArray bytes = ffmpeg.readAllStandardOutput();
    QVector<float> samples(bytes.size() / int(sizeof(float)));
    std::memcpy(samples.data(), bytes.constData(), size_t(samples.size()) * sizeof(float));
    return samples;
}

QVector<float> Sound::samplesOfFixture(const QString& path)
{
    static QString last;
    static QVector<float> samples;
    if (path != last)
        samples = samplesOf(path);
    last = path;
    return samples;
}

double Sound::levelOf(const QVector<float>& samples)
{
    double sum = 0;
    for (const float sample : samples)
        sum += double(sample) * double(sample);
    return std::sqrt(sum / qMax(1, samples.size()));
}

double Sound::shiftOf(const QVector<float>& heard, const QVector<float>& song, int from)
{
    constexpr int farthest = samplesASecond / 5;
    constexpr int begin = samplesASecond / 10; // codecs take some frames to settle
    constexpr int length = 4096;
    int best = farthest;
    double least = std::numeric_limits<double>::max();
    for (int shift = -farthest; shift <= farthest; ++shift) {
        const int at = from + begin + shift;
        if (at < 0 || at + length > song.size() || begin + length > heard.size())
            continue;
        const float* const one = heard.constData() + begin;
        const float* const other = song.constData() + at;
        double difference = 0;
        for (int i = 0; i < length && difference < least; ++i) {
            const double apart = double(one[i]) - double(other[i]);
            difference += apart * apart;
        }
        if (difference < least) {
            least = difference;
            best = shift;
        }
    }
    return best * 1000.0 / samplesASecond;
}
