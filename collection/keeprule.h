#pragma once

#include "collection/bestcopy.h"
#include "collection/filestate.h"

#include <QByteArray>
#include <QString>
#include <QVector>

#include <cstdint>
#include <optional>
#include <string>

/// A copy of a song that is a file.
struct SongCopy
{
    std::string path;        ///< of any bytes, as the system has them
    FileState state;         ///< of what lies at the path itself (FileState::ofEntry), as the copy was found
    BestCopy::Sound sound;   ///< as far as it is known
    std::uint64_t track = 0; ///< by which a music library has it; 0 for a file without one
    QString whyItStays = {}; ///< the file, whatever the rules say; empty for one that may go
};

/// Which copies of a song are rather kept than others. Any thread.
class KeepRule
{
public:
    enum class Kind {
        Best,   ///< what BestCopy says
        First,  ///< in the order of the copies
        Newest, ///< written last; of a link it is what it leads to that counts
        Oldest,
        Largest,
        ShortestPath, ///< in bytes, from the root on and through no linked folder
        InFolder      ///< in the folder or below it, behind all links; where none is, all are as good
    };

    /// By its name: "best", "first", "newest", "oldest", "largest", "shortest-path", "in:FOLDER". Nothing,
    /// with what is wrong with it, for any other; the folder has to be there.
    static std::optional<KeepRule> named(const std::string& name, QString& problem);

    Kind kind() const { return m_kind; }
    /// What it says of the copy that it chose: "sounds best".
    QString reason() const;
    /// Those of the positions that are kept rather than the others, in their order; never none of some.
    QVector<int> choose(const QVector<SongCopy>& copies, const QVector<int>& among) const;

private:
    explicit KeepRule(Kind kind) : m_kind(kind) {}

    Kind m_kind;
    QByteArray m_folder; ///< behind all links, with the slash
};
