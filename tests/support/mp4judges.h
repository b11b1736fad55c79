#pragma once

#include "patience.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>

/// What two programs that others wrote make of MP4 files.
namespace Mp4Judges {
struct Said
{
    bool read = false; ///< whether it opens the file at all
    int rate = 0;
    double milliseconds = 0;
    double bitRate = 0;
    QHash<QString, QString> texts; ///< by mutagen's names or ffmpeg's
};

inline QByteArray outputOf(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(patience))
        qFatal("%s does not end", qUtf8Printable(program));
    return process.readAllStandardOutput();
}

inline double number(const QJsonObject& object, const char* name)
{
    return object.value(QLatin1String(name)).toString().toDouble();
}

inline Said ffmpeg(const QString& path)
{
    const QJsonObject all =
        QJsonDocument::fromJson(outputOf("ffprobe", {"-v", "error", "-of", "json", "-show_format",
                                                     "-show_streams", "-select_streams", "a:0", path}))
            .object();
    const QJsonObject stream = all["streams"].toArray().at(0).toObject();
    Said said;
    said.read = !stream.isEmpty();
    said.rate = int(number(stream, "sample_rate"));
    said.milliseconds = number(stream, "duration") * 1000;
    said.bitRate = number(stream, "bit_rate");
    const QJsonObject texts = all["format"].toObject()["tags"].toObject();
    for (auto text = texts.begin(); text != texts.end(); ++text)
        said.texts.insert(text.key(), text.value().toString());
    return said;
}

inline Said mutagen(const QString& path)
{
    static const char* const script =
        "import json, sys\n"
        "from mutagen.mp4 import MP4\n"
        "song = MP4(sys.argv[1])\n"
        "print(json.dumps([song.info.sample_rate, song.info.length * 1000, song.info.bitrate, {\n"
        "    key: str(value[0]) for key, value in (song.tags or {}).items()\n"
        "    if isinstance(value, list) and value}]))\n";
    const QString python =
        QStandardPaths::findExecutable(QStringLiteral("python3"), {QStringLiteral("/usr/bin")});
    const QJsonArray all = QJsonDocument::fromJson(outputOf(python, {"-c", script, path})).array();
    Said said;
    said.read = !all.isEmpty();
    said.rate = all.at(0).toInt();
    said.milliseconds = all.at(1).toDouble();
    said.bitRate = all.at(2).toDouble();
    const QJsonObject texts = all.at(3).toObject();
    for (auto text = texts.begin(); text != texts.end(); ++text)
        said.texts.insert(text.key(), text.value().toString());
    return said;
}
} // namespace Mp4Judges
