#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

#include <optional>
#include <string>

/// Texts and picture in the tags of a file: all that it holds, or what of it is to become something else.
struct TagTexts
{
    QMap<QString, QString> texts; ///< by the field's name; an empty one is as good as none
    std::optional<QByteArray>
        picture; ///< the bytes of a picture's file; empty for none, nothing for the one there is

    bool isEmpty() const { return texts.isEmpty() && !picture; }
};

/// Reads and writes the tags of files. Whoever has changes of them kept hands in one; it answers for which
/// names fields have, as long as there is a history that holds them. Paths are bytes as the system has them.
class TagFiles
{
public:
    virtual ~TagFiles() = default;
    TagFiles(const TagFiles&) = delete;
    TagFiles& operator=(const TagFiles&) = delete;

    /// What the file holds, picture included. The reason why not, or empty.
    virtual QString read(const std::string& path, TagTexts& held) = 0;
    /// Puts the change into the file and leaves everything else in it alone: whole, or not at all. The reason
    /// why not all of it was done, or empty.
    virtual QString write(const std::string& path, const TagTexts& change) = 0;

protected:
    TagFiles() = default;
};
