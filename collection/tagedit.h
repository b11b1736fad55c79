#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

#include <optional>
#include <string>

/// What is to be changed in songs, without a window; all else stays as it is. Any thread.
struct TagEdit
{
    QMap<int, QString> texts;        ///< by TagItemType; an empty one clears the field
    std::optional<QByteArray> cover; ///< the bytes of a picture's file; empty ones take all pictures out

    bool isEmpty() const { return texts.isEmpty() && !cover; }
    /// Saves it into the file at the path (bytes of the system), whole or not at all; why not, or empty.
    QString save(const std::string& path) const;
};

/// Pictures of songs, as their files have them.
namespace CoverFile {
/// The bytes of the picture that lists show of a song; empty without one, and for a file that cannot be read.
QByteArray read(const std::string& path);
/// Whether the bytes begin as a picture of the kinds that songs carry: JPEG or PNG.
bool isPicture(const QByteArray& bytes);
} // namespace CoverFile
