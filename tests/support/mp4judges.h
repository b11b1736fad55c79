#pragma once

#include "patience.h"
#include "sound.h"

#include <QFile>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>

/// What two readers that others wrote make of MP4 files.
namespace Mp4Judges {
struct Said
{
    bool read = false; ///< whether it opens the file at all
    int rate = 0;
    double milliseconds = 0;
    double bitRate = 0;            ///< only by FFmpeg
    QHash<QString, QString> texts; ///< by mutagen's names or FFmpeg's
};

inline QByteArray outputOf(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(patience))
        qFatal("%s does not end", qUtf8Printable(program));
    return process.readAllStandardOutput();
}

inline Said ffmpeg(const QString& path)
{
    const Sound::Told told = Sound::toldOf(path);
    return {told.figures.rate > 0, told.figures.rate, told.figures.trackSeconds * 1000,
            double(told.figures.trackBitRate), told.ofFile};
}

/// By path; files that it does not open are not read.
inline QHash<QString, Said> mutagen(const QStringList& paths)
{
    static const char* const script =
        "import json, sys\n"
        "from mutagen import MutagenError\n"
        "from mutagen.mp4 import MP4\n"
        "def said(path):\n"
        "    try:\n"
        "        song = MP4(path)\n"
        "    except MutagenError:\n"
        "        return []\n"
        "    texts = {key: str(value[0]) for key, value in (song.tags or {}).items()\n"
        "             if isinstance(value, list) and value}\n"
        "    return [song.info.sample_rate, song.info.length * 1000, texts]\n"
        "print(json.dumps([said(path) for path in sys.argv[1:]]))\n";
    const QString python =
        QStandardPaths::findExecutable(QStringLiteral("python3"), {QStringLiteral("/usr/bin")});
    const QJsonArray all =
        QJsonDocument::fromJson(outputOf(python, QStringList{"-c", script} + paths)).array();
    QHash<QString, Said> songs;
    for (int i = 0; i < paths.size(); ++i) {
        const QJsonArray one = all.at(i).toArray();
        Said& said = songs[paths.at(i)];
        said.read = !one.isEmpty();
        said.rate = one.at(0).toInt();
        said.milliseconds = one.at(1).toDouble();
        const QJsonObject texts = one.at(2).toObject();
        for (auto text = texts.begin(); text != texts.end(); ++text)
            said.texts.insert(text.key(), text.value().toString());
    }
    return songs;
}

/// What ffmpeg makes of a file when it plays it.
struct Heard
{
    QByteArray sound; ///< a sum of what is decoded
    QHash<QString, QString> texts;
};

/// All at once: a program for each file would take many times as long.
inline QHash<QString, Heard> play(const QStringList& paths, const QString& folder)
{
    const auto answer = [&folder](int number, const char* end) {
        return QStringLiteral("%1/%2.%3").arg(folder).arg(number).arg(QLatin1String(end));
    };
    const auto contentOf = [](const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    QStringList inputs;
    QStringList outputs;
    for (int i = 0; i < paths.size(); ++i) {
        const QString number = QString::number(i);
        inputs << "-i" << paths.at(i);
        const QString sound = number + ":a";
        outputs += QStringList{"-map", sound, "-f", "md5", answer(i, "sum")};
        outputs += QStringList{"-map", sound, "-c", "copy", "-map_metadata", number};
        outputs += QStringList{"-f", "ffmetadata", answer(i, "texts")};
    }
    outputOf("ffmpeg", QStringList{"-v", "error", "-y"} + inputs + outputs);
    QHash<QString, Heard> songs;
    for (int i = 0; i < paths.size(); ++i) {
        Heard& heard = songs[paths.at(i)];
        heard.sound = contentOf(answer(i, "sum"));
        for (const QString& line : QString::fromUtf8(contentOf(answer(i, "texts"))).split('\n'))
            heard.texts.insert(line.section('=', 0, 0), line.section('=', 1));
    }
    return songs;
}
} // namespace Mp4Judges
