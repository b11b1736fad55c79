#include "sound.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QFile>
#include <QLibrary>

#include <cmath>
#include <cstring>
#include <limits>

namespace {
template <typename Function>
Function* offered(const char* name)
{
    const auto function = reinterpret_cast<Function*>(
        QLibrary::resolve(QCoreApplication::applicationDirPath() + "/liblistening", name));
    if (!function)
        qFatal("there is no module to listen with");
    return function;
}

int listen(const QString& path, int rate, Listening::Take take, void* to)
{
    return offered<decltype(listenToFile)>("listenToFile")(QFile::encodeName(path).constData(), rate, take,
                                                           to);
}
} // namespace

QByteArray Sound::sumOf(const QString& path, int* damaged)
{
    struct Sum
    {
        QCryptographicHash hash{QCryptographicHash::Md5};
        bool any = false;
    } sum;
    const int damage = listen(
        path, 0,
        [](void* to, const std::uint8_t* bytes, std::size_t size) {
            static_cast<Sum*>(to)->hash.addData(reinterpret_cast<const char*>(bytes), int(size));
            static_cast<Sum*>(to)->any = true;
        },
        &sum);
    if (damaged)
        *damaged = damage;
    return sum.any ? sum.hash.result() : QByteArray();
}

QVector<float> Sound::samplesOf(const QString& path)
{
    QVector<float> samples;
    listen(
        path, samplesASecond,
        [](void* to, const std::uint8_t* bytes, std::size_t size) {
            auto& all = *static_cast<QVector<float>*>(to);
            const int before = all.size();
            all.resize(before + int(size / sizeof(float)));
            std::memcpy(all.data() + before, bytes, size);
        },
        &samples);
    if (samples.isEmpty())
        qFatal("nothing is heard of %s", qUtf8Printable(path));
    return samples;
}

Sound::Told Sound::toldOf(const QString& path)
{
    Told told;
    told.figures = offered<decltype(askFile)>("askFile")(
        QFile::encodeName(path).constData(),
        [](void* to, bool ofFile, const char* name, const char* value) {
            auto& all = *static_cast<Told*>(to);
            (ofFile ? all.ofFile : all.ofTrack).insert(QString::fromUtf8(name), QString::fromUtf8(value));
        },
        &told);
    return told;
}

qint64 Sound::bytesOf(const QString& path)
{
    return offered<decltype(weighFile)>("weighFile")(QFile::encodeName(path).constData());
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
