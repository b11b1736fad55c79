#pragma once

#include "base/platform.h"
#include "base/trash.h"
#include "collection/historyline.h"

#include <QString>
#include <QVector>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

/// What a step changed about one file. Paths are absolute, in bytes as the system has them.
struct FileChange
{
    enum class Kind {
        Trashed,
        Deleted, ///< for good
        Edited,  ///< its tags
        TakenOut ///< tracks, of a music library
    };
    struct Field
    {
        QString name;
        QString old;
        QString now;
    };

    Kind kind = Kind::Deleted;
    std::string path;
    base::FileState before; ///< size, time, and whether it is a link; those alone
    bool isBack = false;    ///< it was taken back

    std::string trash; ///< of what is in the trash: its folder, and the name there
    std::string nameInTrash;

    std::optional<base::FileState> after; ///< of an edit that was seen through
    QVector<Field> fields;                ///< that it changed
    bool coverChanged = false;
    std::string oldCover; ///< its name among the covers that are kept; empty for none
    std::string newCover; ///< the name that it would have there

    int tracks = 0;    ///< that were taken out
    std::string taken; ///< the name that what brings them back has among the covers

    base::TrashedFile trashedFile() const { return {path, trash, nameInTrash, before}; }
};

/// What one call of a program changed.
struct HistoryStep
{
    int number = 0;
    std::int64_t time = 0;             ///< seconds since 1970, when it began
    std::string what;                  ///< the words of the caller
    bool isEnded = false;              ///< else it was killed, or is at it still
    bool wasTried = false;             ///< to be taken back, to its end
    std::map<int, FileChange> changes; ///< by their numbers, in the order of doing

    /// That were not taken back.
    int changesLeft() const;
};

/// The lines of a history, one after the other, and what they come to.
class HistorySteps
{
public:
    /// Each makes a line, with the line feed.
    static std::string beginLine(int step, std::int64_t time, const std::string& what);
    static std::string changeLine(int step, int number, const FileChange& change);
    /// The change was not made after all.
    static std::string notDoneLine(int step, int number);
    /// What the edit left.
    static std::string leftLine(int step, int number, const base::FileState& after);
    /// The change was taken back, which left the file in that state.
    static std::string backLine(int step, int number, const base::FileState& now);
    static std::string triedLine(int step);
    static std::string endLine(int step);

    /// The step that a line belongs to; nothing for one that is not whole.
    static std::optional<int> stepOf(std::string_view line);
    /// The step that a line begins; nothing for any other line.
    static std::optional<int> begunBy(std::string_view line);

    /// The next line, without its line feed. One that is not whole, or of no step that is known, is passed
    /// over.
    void take(std::string_view line);

    std::map<int, HistoryStep>& all() { return m_steps; }
    const std::map<int, HistoryStep>& all() const { return m_steps; }
    /// What the edit left, through all that was taken back since; nothing where it was not seen through.
    std::optional<base::FileState> left(const FileChange& edit) const;
    /// What the change found, through the same: so the file looks that a kill kept where it was.
    base::FileState found(const FileChange& change) const;
    void tookBack(FileChange& change, const base::FileState& now);

private:
    void takeChange(HistoryStep& step, HistoryLine::Reader& line);
    base::FileState since(const std::string& path, base::FileState state) const;

    std::map<int, HistoryStep> m_steps;
    /// By path: the states that edits had found, and those that taking them back made again.
    std::unordered_map<std::string, std::vector<std::pair<base::FileState, base::FileState>>> m_again;
};
