#pragma once

#include <QByteArray>
#include <QHash>
#include <QPair>
#include <QString>

/// A music file through the audio core, in Qt's terms.
namespace AudioFile {
struct Content
{
    QHash<int, QString> texts; ///< by TagItemType
    QByteArray picture;
};

/// The items as the application reads them.
Content read(const QString& path);
/// Removes and sets each item given as the application does, an empty picture included when `picture` is not
/// null; the result of Save.
int write(const QString& path, const QHash<int, QString>& texts, const QByteArray* picture = nullptr);
/// Duration in milliseconds and format code.
struct Properties
{
    int duration;
    int format;
    int sampleRate;
    int bitRate;
};
Properties properties(const QString& path);
/// The log lines of the audio core since the last call.
QStringList takeLog();
} // namespace AudioFile
