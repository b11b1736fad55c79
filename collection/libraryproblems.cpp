#include "collection/libraryproblems.h"

#include <QHash>
#include <QPair>

using LibraryProblems::Problem;
using Track = LibraryTracks::Track;

namespace {
/// Looks at one track after the other, and knows the files of those before.
class Finder
{
public:
    explicit Finder(const LibraryProblems::Tell& tell) : m_tell(tell) {}

    void look(const Track& track)
    {
        if (track.song.persistentId == 0)
            tell("identifier", track, "no identifier, or that of another track: it cannot be changed");
        switch (track.media) {
        case LibraryTracks::Media::None:
            tell("no-file", track, "no file on this machine");
            break;
        case LibraryTracks::Media::Missing:
            tell("missing", track, "the file is not there");
            break;
        case LibraryTracks::Media::There:
            lookAtFile(track);
            break;
        }
    }

private:
    void tell(const char* kind, const Track& track, const QString& more)
    {
        m_tell(Problem{kind, track.song, more});
    }
    void lookAtFile(const Track& track)
    {
        if (track.bytesInLibrary != 0 && track.bytesInLibrary != track.song.bytes)
            tell("changed", track,
                 QStringLiteral("the file has %1 bytes, in the library it has %2")
                     .arg(track.song.bytes)
                     .arg(track.bytesInLibrary));
        const FileState state = FileState::of(track.song.path);
        const auto known = m_files.constFind(state);
        if (known == m_files.constEnd())
            m_files.insert(state, QString::fromStdString(track.song.path));
        else
            tell("shared", track, QStringLiteral("the same file as that of another track, ") + *known);
    }

    const LibraryProblems::Tell& m_tell;
    QHash<FileState, QString> m_files; ///< with the path of the first track that has it
};

void lookAtJournal(const LibraryTracks& tracks, const LibraryProblems::Tell& tell)
{
    Problem problem{"journal", SongFile(), QString::fromStdString(tracks.waitingProblem())};
    if (problem.more.isEmpty() && tracks.waiting() > 0)
        problem.more = QStringLiteral("changes wait that were not written yet: %1").arg(tracks.waiting());
    if (!problem.more.isEmpty())
        tell(problem);
}
} // namespace

bool LibraryProblems::find(LibraryTracks& tracks, const Tell& tell, const GoOn& goOn)
{
    lookAtJournal(tracks, tell);
    Finder finder(tell);
    for (int position = 0; position < tracks.count(); ++position) {
        if (!goOn(position))
            return false;
        finder.look(tracks.at(position));
    }
    return true;
}
