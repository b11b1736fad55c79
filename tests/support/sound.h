#pragma once

#include <QString>
#include <QVector>

/// What a file sounds like, as ffmpeg hears it.
namespace Sound {
constexpr int samplesASecond = 44100;

/// The file's samples, mono.
QVector<float> samplesOf(const QString& path);

/// The same of a file that never changes: the last one's are kept.
QVector<float> samplesOfFixture(const QString& path);

double levelOf(const QVector<float>& samples);

/// By how many milliseconds what is heard lies behind the sample `from` of the whole song: where a piece of
/// it is found again.
double shiftOf(const QVector<float>& heard, const QVector<float>& song, int from);
} // namespace Sound
