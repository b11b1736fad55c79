#include "fixtures.h"

#include "mediabytes.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QHash>
#include <QImage>
#include <QPainter>
#include <QProcess>
#include <QtEndian>
#include <QVector>

#include <cmath>
#include <random>

namespace {
struct Encoding
{
    const char* suffix;
    const char* options;
};

const QHash<QString, Encoding>& encodings()
{
    static const QHash<QString, Encoding> table = {
        {QStringLiteral("mp3"), {"mp3", "-c:a libmp3lame -b:a 128k"}},
        {QStringLiteral("mp3vbr"), {"mp3", "-c:a libmp3lame -q:a 4"}},
        {QStringLiteral("mp3novbr"), {"mp3", "-c:a libmp3lame -q:a 4 -write_xing 0"}},
        {QStringLiteral("m4a"), {"m4a", "-c:a aac -b:a 96k"}},
        {QStringLiteral("alac"), {"m4a", "-c:a alac"}},
        {QStringLiteral("mp4flac"), {"m4a", "-c:a flac -strict -2 -f mp4"}},
        {QStringLiteral("mp4opus"), {"m4a", "-c:a libopus -b:a 64k -f mp4"}},
        {QStringLiteral("mp4ac3"), {"m4a", "-c:a ac3 -b:a 192k -f mp4"}},
        {QStringLiteral("mp4eac3"), {"m4a", "-c:a eac3 -b:a 192k -f mp4"}},
        {QStringLiteral("mp4fragments"),
         {"m4a", "-c:a aac -b:a 96k -movflags +empty_moov -frag_duration 50000 -f mp4"}},
        {QStringLiteral("mp4half"), {"m4a", "-ar 22050 -c:a aac -b:a 64k -f mp4"}},
        {QStringLiteral("aac"), {"aac", "-c:a aac -b:a 96k -f adts"}},
        {QStringLiteral("aacquad"), {"aac", "-af aformat=channel_layouts=quad -c:a aac -f adts"}},
        {QStringLiteral("flac"), {"flac", "-c:a flac"}},
        {QStringLiteral("wma"), {"wma", "-c:a wmav2 -b:a 128k"}},
        {QStringLiteral("wav"), {"wav", "-c:a pcm_s16le"}},
        {QStringLiteral("adpcm"), {"wav", "-c:a adpcm_ms"}},
        {QStringLiteral("ima"), {"wav", "-c:a adpcm_ima_wav"}},
        {QStringLiteral("gsm"), {"wav", "-c:a libgsm_ms -ar 8000 -ac 1"}},
        {QStringLiteral("mulaw"), {"wav", "-c:a pcm_mulaw"}},
        {QStringLiteral("alaw"), {"wav", "-c:a pcm_alaw"}},
        {QStringLiteral("float"), {"wav", "-c:a pcm_f32le"}},
        {QStringLiteral("surround"), {"wav", "-c:a pcm_s24le -ac 6"}},
        {QStringLiteral("rf64"), {"wav", "-c:a pcm_s16le -rf64 always"}},
        {QStringLiteral("ogg"), {"ogg", "-c:a libvorbis -q:a 3"}},
        {QStringLiteral("opus"), {"ogg", "-c:a libopus -b:a 64k"}},
        {QStringLiteral("oggflac"), {"ogg", "-c:a flac -f ogg"}},
        {QStringLiteral("w64"), {"wav", "-c:a pcm_s16le -f w64"}},
        {QStringLiteral("loas"), {"aac", "-c:a aac -b:a 96k -f latm"}},
    };
    return table;
}

constexpr int samplesASecond = 44100;
constexpr int longestPart = 60; // s

// A tone over noise that comes and goes, so that a variable bit rate varies: samples of two channels, which
// repeat after a minute. The encoder's own source of sound takes longer to compute it than the encoder to
// encode it.
QByteArray sound(int milliseconds)
{
    constexpr double turn = 2 * 3.14159265358979323846;
    const qint64 length = qint64(milliseconds) * samplesASecond / 1000;
    std::minstd_rand noise;
    QVector<float> samples;
    for (int at = 0; at < qMin<qint64>(length, longestPart * samplesASecond); ++at) {
        const double tone = 0.2 * std::sin(440 * turn * at / samplesASecond);
        const bool noisy = at % (2 * samplesASecond) > samplesASecond;
        for (int channel = 0; channel < 2; ++channel)
            samples.append(float(tone + (noisy ? 0.3 * (double(noise()) / noise.max() - 0.5) : 0)));
    }
    const QByteArray part(reinterpret_cast<const char*>(samples.constData()),
                          samples.size() * int(sizeof(float)));
    const int size = int(length * 2 * qint64(sizeof(float)));
    return part.isEmpty() ? part : part.repeated((size + part.size() - 1) / part.size()).left(size);
}

void encode(const QString& kind, int milliseconds, const QString& target)
{
    QStringList arguments =
        QStringLiteral("-v error -y -f f32le -ar %1 -ac 2 -i -").arg(samplesASecond).split(QLatin1Char(' '));
    arguments += QString::fromLatin1(encodings().value(kind).options).split(QLatin1Char(' '));
    arguments << QStringLiteral("-map_metadata") << QStringLiteral("-1") << QStringLiteral("-bitexact")
              << target;
    QProcess ffmpeg;
    ffmpeg.start(QStringLiteral("ffmpeg"), arguments);
    ffmpeg.write(sound(milliseconds));
    ffmpeg.closeWriteChannel();
    if (!ffmpeg.waitForFinished(600000) || ffmpeg.exitCode() != 0)
        qFatal("ffmpeg cannot make %s: %s", qUtf8Printable(target),
               ffmpeg.readAllStandardError().constData());
}

quint32 crc32(const QByteArray& bytes)
{
    quint32 crc = 0xFFFFFFFF;
    for (const char byte : bytes) {
        crc ^= quint8(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = crc >> 1 ^ (crc & 1 ? 0xEDB88320 : 0);
    }
    return ~crc;
}

template <typename Number>
void put(QByteArray& bytes, Number number)
{
    const Number little = qToLittleEndian(number);
    bytes.append(reinterpret_cast<const char*>(&little), sizeof little);
}
} // namespace

QStringList Fixtures::formats()
{
    return {QStringLiteral("mp3"),  QStringLiteral("m4a"), QStringLiteral("ape"), QStringLiteral("aac"),
            QStringLiteral("flac"), QStringLiteral("wma"), QStringLiteral("wav"), QStringLiteral("ogg")};
}

QStringList Fixtures::furtherKinds()
{
    return {QStringLiteral("mp3novbr"), QStringLiteral("alac"), QStringLiteral("opus"),
            QStringLiteral("oggflac")};
}

QStringList Fixtures::mp4Kinds()
{
    return {QStringLiteral("mp4flac"), QStringLiteral("mp4opus"), QStringLiteral("mp4ac3"),
            QStringLiteral("mp4eac3")};
}

QStringList Fixtures::wavKinds()
{
    return {QStringLiteral("adpcm"),   QStringLiteral("ima"),  QStringLiteral("gsm"),
            QStringLiteral("mulaw"),   QStringLiteral("alaw"), QStringLiteral("float"),
            QStringLiteral("surround")};
}

QString Fixtures::suffixOf(const QString& kind)
{
    return kind == QLatin1String("ape") ? kind : QString::fromLatin1(encodings().value(kind).suffix);
}

QString Fixtures::tone(const QString& kind)
{
    return tone(kind, 3000);
}

QString Fixtures::tone(const QString& kind, int milliseconds)
{
    const QString folder = QCoreApplication::applicationDirPath() + QLatin1String("/../../fixtures/");
    const QString name = QStringLiteral("%1-%2.%3").arg(kind).arg(milliseconds).arg(suffixOf(kind));
    const QString path = QDir::cleanPath(folder + name);
    if (QFile::exists(path))
        return path;
    QDir().mkpath(folder);
    // Several test programs may make it at once: each its own, and the last one stays.
    const QString own =
        QStringLiteral("%1%2-%3").arg(folder).arg(QCoreApplication::applicationPid()).arg(name);
    if (kind == QLatin1String("ape")) {
        QFile file(own);
        if (!file.open(QIODevice::WriteOnly) || file.write(silentApe(milliseconds)) < 0)
            qFatal("cannot write %s", qUtf8Printable(own));
    } else {
        encode(kind, milliseconds, own);
    }
    if (!QFile::rename(own, path))
        QFile::remove(own);
    return path;
}

QString Fixtures::copyTone(const QString& kind, const QString& folder, const QString& name)
{
    const QString path = folder + QLatin1Char('/') + name + QLatin1Char('.') + suffixOf(kind);
    QFile::remove(path);
    if (!QFile::copy(tone(kind), path))
        qFatal("cannot copy to %s", qUtf8Printable(path));
    return path;
}

QByteArray Fixtures::silentApe(int milliseconds)
{
    constexpr quint32 blocksPerFrame = 73728;
    const quint32 blocks = quint32(qint64(milliseconds) * 44100 / 1000);
    const quint32 frames = (blocks + blocksPerFrame - 1) / blocksPerFrame;
    const quint32 finalBlocks = blocks - (frames - 1) * blocksPerFrame;
    QByteArray ape("MAC ");
    put<quint16>(ape, 3990);
    put<quint16>(ape, 0);
    for (const quint32 number : {52u, 24u, 4 * frames, 0u, 16 * frames, 0u, 0u})
        put<quint32>(ape, number);
    ape.append(QByteArray(16, '\0')); // no checksum
    put<quint16>(ape, 2000);
    put<quint16>(ape, 0x20);
    for (const quint32 number : {blocksPerFrame, finalBlocks, frames})
        put<quint32>(ape, number);
    put<quint16>(ape, 16);
    put<quint16>(ape, 2);
    put<quint32>(ape, 44100);
    for (quint32 frame = 0; frame < frames; ++frame)
        put<quint32>(ape, 52 + 24 + 4 * frames + 16 * frame);
    for (quint32 frame = 0; frame < frames; ++frame) {
        const quint32 length = frame + 1 == frames ? finalBlocks : blocksPerFrame;
        put<quint32>(ape, crc32(QByteArray(int(length * 4), '\0')) >> 1 | 0x80000000);
        put<quint32>(ape, 3); // both channels silent
        put<quint64>(ape, 0);
    }
    return ape;
}

QByteArray Fixtures::gif(const QSize& screen)
{
    using MediaBytes::little;
    return "GIF89a" + little(quint16(screen.width())) + little(quint16(screen.height())) +
           QByteArray::fromHex("800000000000ffffff2c00000000010001000002024401003b");
}

QByteArray Fixtures::jpeg(int width, int height, int seed)
{
    QImage picture(width, height, QImage::Format_RGB32);
    QPainter painter(&picture);
    QLinearGradient sky(0, 0, width, height);
    sky.setColorAt(0, QColor::fromHsv(seed * 47 % 360, 90, 245));
    sky.setColorAt(1, QColor::fromHsv((seed * 47 + 60) % 360, 150, 160));
    painter.fillRect(picture.rect(), sky);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    for (int i = 0; i < 6; ++i) {
        painter.setBrush(QColor::fromHsv((seed * 31 + i * 53) % 360, 110, 235, 120));
        const int edge = width / 6 + (seed * 7 + i * 13) % (width / 4 + 1);
        painter.drawEllipse(QPoint((seed * 17 + i * 71) % width, (seed * 23 + i * 37) % height), edge, edge);
    }
    painter.end();
    // Some grain, as photographs have it.
    quint32 grain = quint32(seed) + 1;
    for (int y = 0; y < height; ++y) {
        auto* line = reinterpret_cast<QRgb*>(picture.scanLine(y));
        for (int x = 0; x < width; ++x) {
            grain = grain * 1664525 + 1013904223;
            const int shade = int(grain >> 24) % 17 - 8;
            line[x] = qRgb(qBound(0, qRed(line[x]) + shade, 255), qBound(0, qGreen(line[x]) + shade, 255),
                           qBound(0, qBlue(line[x]) + shade, 255));
        }
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    picture.save(&buffer, "JPEG", 88);
    return bytes;
}
