#pragma once

#include <QMap>
#include <QRegularExpression>
#include <QString>
#include <QStringList>

#include <string>

/// Tells fields of a song from its file's name: "{artist}/{album}/{track} - {title}" takes a file's name
/// without its ending, and so many of the folders above as the pattern has "/". Fields are {title},
/// {artist}, {album}, {genre}, {year}, {track}, digits alone the last two, and {ignore} for what is none.
/// Each but the last takes as little as it can. One thread at a time.
class NamePattern
{
public:
    NamePattern() = default;
    /// `wrong` says what makes no sense about the pattern; it is empty for one that does.
    NamePattern(const QString& pattern, QString& wrong);

    bool isEmpty() const { return m_fields.isEmpty(); }
    /// The texts by the names of fields, without outer blanks; none when the name is not like the pattern, or
    /// no text. A number stands without leading zeros.
    QMap<QString, QString> read(const std::string& path) const;

private:
    QString parse(const QString& pattern);
    QString addField(const QString& name, bool isApart);

    QRegularExpression m_expression;
    QStringList m_fields; ///< in their order
    int m_folders = 0;    ///< above the file that the pattern names
};
