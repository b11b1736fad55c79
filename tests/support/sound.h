#pragma once

#include "listening.h"

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QVector>

/// What a file sounds like, as FFmpeg's libraries hear it. They are loaded when somebody listens first: it
/// takes their program as long to begin as it takes to hear thirty songs.
namespace Sound {
/// A sum over the sound of all audio tracks as it is decoded. What is damaged is left out, and counted where
/// that is asked for. Empty where nothing is heard.
QByteArray sumOf(const QString& path, int* damaged = nullptr);

/// What they find said in a file, and its tags by their names.
struct Told
{
    Listening::Figures figures{};
    QHash<QString, QString> ofFile;
    QHash<QString, QString> ofTrack;
};
Told toldOf(const QString& path);

/// The bytes of the first track, without what the file has around them.
qint64 bytesOf(const QString& path);

constexpr int samplesASecond = 44100;

/// The samples of the file's first track, mono.
QVector<float> samplesOf(const QString& path);

/// The same of a file that never changes: the last one's are kept.
QVector<float> samplesOfFixture(const QString& path);

double levelOf(const QVector<float>& samples);

/// By how many milliseconds what is heard lies behind the sample `from` of the whole song: where a piece of
/// it is found again.
double shiftOf(const QVector<float>& heard, const QVector<float>& song, int from);
} // namespace Sound
