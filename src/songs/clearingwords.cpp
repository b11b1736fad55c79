#include "songs/clearingwords.h"

#include "collection/counttext.h"
#include "dupmusicinfo.h"
#include "qmusicinfo.h"
#include "songs/songfields.h"
#include "songs/songremoval.h"

#include <QSet>

#include <algorithm>

namespace {
/// "2 songs", "2 tracks".
QString countedSongs(int count)
{
    return SongRemoval::songsAreFiles() ? CountText::of(quint64(count), "song", "songs")
                                        : CountText::of(quint64(count), "track", "tracks");
}

/// "Midnight Ferry" (FLAC) and 2 more.
QString namesOf(const QList<QMusicInfo*>& songs, const QString& title)
{
    const QString kind = SongFields::kind(songs.first());
    QString names = QLatin1Char('"') + title + QLatin1Char('"');
    if (!kind.isEmpty())
        names += QLatin1String(" (") + kind + QLatin1Char(')');
    if (songs.size() > 1)
        names += QStringLiteral(" and %1 more").arg(CountText::number(quint64(songs.size() - 1)));
    return names;
}

QString questionFor(int going, const QList<QMusicInfo*>& kept, const TextFit::Fits& fits)
{
    if (going == 0)
        return QStringLiteral("Every song of this group is kept: there is nothing to delete.");
    const QString beginning = QLatin1String("Delete ") + countedSongs(going) + QLatin1String(", keep ");
    if (kept.isEmpty())
        return beginning + QLatin1String("none of this group?");
    const auto question = [&](const QString& title) {
        return beginning + namesOf(kept, title) + QLatin1Char('?');
    };
    const auto titleFits = [&](const QString& title) { return fits(question(title)); };
    return question(TextFit::elided(SongFields::title(kept.first()).simplified(), titleFits));
}

/// How many files of the songs a deletion removes, each counted once, by the rules of SongRemoval.
QString filesThatGo(const QList<QMusicInfo*>& songs, const KeptFiles& kept)
{
    QSet<FileState> counted;
    int going = 0;
    for (const QMusicInfo* song : songs) {
        const QString path = SongFields::audioPath(song);
        const FileState file = FileState::ofEntry(path);
        if (!file.exists() || !song->localInfo || counted.contains(file))
            continue;
        counted.insert(file);
        going += file == song->localInfo->file && !kept.wouldLose(path) ? 1 : 0;
    }
    const int staying = counted.size() - going;
    QString words = CountText::of(quint64(going), "file goes", "files go");
    if (staying > 0)
        words += QLatin1String(", ") + CountText::of(quint64(staying), "stays", "stay");
    return words + QLatin1Char('.');
}

QString filesOf(const QList<QMusicInfo*>& going, const QList<QMusicInfo*>& kept)
{
    if (going.isEmpty())
        return QString();
    if (SongRemoval::songsAreFiles())
        return filesThatGo(going, SongRemoval::filesOf(kept));
    return going.size() == 1 ? QStringLiteral("Its file stays.") : QStringLiteral("Their files stay.");
}

int songsBesideTheFirst(const QList<QMusicInfo*>& group)
{
    return std::max(group.size() - 1, 0);
}

/// Of the group shown: what is not kept, and then what the clearing of all groups takes of the entries that
/// are left, which are its first ones (oddity 25).
int songsOfShown(const QList<QMusicInfo*>& group, const QSet<const QMusicInfo*>& kept)
{
    const auto isKept = [&kept](const QMusicInfo* song) { return kept.contains(song); };
    const auto keptOnes = std::count_if(group.begin(), group.end(), isKept);
    const auto left = group.begin() + keptOnes;
    const auto keptButTaken = keptOnes > 1 ? std::count_if(group.begin() + 1, left, isKept) : 0;
    return int(group.size() - keptOnes + keptButTaken);
}
} // namespace

ClearingWords::Question ClearingWords::beforeGroup(const QList<QMusicInfo*>& going,
                                                   const QList<QMusicInfo*>& kept, const TextFit::Fits& fits)
{
    return {questionFor(going.size(), kept, fits), filesOf(going, kept), kept.isEmpty() && !going.isEmpty()};
}

QString ClearingWords::beforeAll(const QList<DupMusicInfo*>& groups, const QList<QMusicInfo*>* shown,
                                 const QList<QMusicInfo*>& kept)
{
    int all = 0;
    int going = 0;
    for (int position = 0; position < groups.size(); ++position) {
        const QList<QMusicInfo*>& group = groups.at(position)->musicList;
        all += group.size();
        if (&group != shown) {
            going += songsBesideTheFirst(group);
            continue;
        }
        going += songsOfShown(group, QSet<const QMusicInfo*>(kept.begin(), kept.end()));
        // Oddity 25: a group without marks takes its last entry from the next one, whose last song stays so.
        if (kept.isEmpty() && group.size() > 1 && position + 1 < groups.size())
            going -= std::min(songsBesideTheFirst(groups.at(position + 1)->musicList), 1);
    }
    const QString songs = countedSongs(going);
    const QString ofGroups = CountText::of(quint64(groups.size()), "group", "groups");
    const QString staying = CountText::number(quint64(all - going));
    const QString files = SongRemoval::songsAreFiles()
                              ? QStringLiteral("with their files")
                              : QStringLiteral("out of the library, not their files");
    return QStringLiteral("Of %1, %2 go %3; %4 stay.\n").arg(ofGroups, songs, files, staying) +
           QStringLiteral("This group goes by its check marks; of every other one the first song stays.");
}
