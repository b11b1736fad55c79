#pragma once

#include <QList>
#include <QStringList>
#include <QVector>

/// What makes a song undefined, and which songs are duplicates of one another. Plain lists in, positions out.
/// Any thread.
namespace Classification {
/// Whether one of the four texts is empty; blanks are not nothing.
inline bool isUndefined(const QString& title, const QString& artist, const QString& album,
                        const QString& genre)
{
    return title.isEmpty() || artist.isEmpty() || album.isEmpty() || genre.isEmpty();
}

/// Which of the four are empty, as "title" and so on, in that order.
QStringList missingFields(const QString& title, const QString& artist, const QString& album,
                          const QString& genre);

/// The duplicate groups in the order of the songs that open them; each lists its opener and then the others,
/// ascending. A song opens a group when its title is not empty and occurs at least twice, and its duration
/// (milliseconds) is not 0 and occurs at least twice, anywhere in the list; all later songs of the same title
/// join it, whatever their durations. One title opens at most one group. Titles are compared exactly.
///
/// The two lists are of one length, one entry per song; entries beyond the shorter one are ignored. Takes
/// time and memory in proportion to the number of songs.
QVector<QVector<int>> groupDuplicates(const QStringList& titles, const QList<quint64>& durations);

/// The groups of two and more equal texts, empty ones left out: in the order of their first ones, each
/// ascending. Takes time and memory in proportion to the number of texts.
QVector<QVector<int>> groupEqual(const QStringList& texts);
} // namespace Classification
