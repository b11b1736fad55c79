#include "collection/historysteps.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <utility>

namespace {
using Reader = HistoryLine::Reader;

constexpr std::string_view beginning = "step";
constexpr std::string_view kinds[] = {"trashed", "deleted", "edited",
                                      "taken-out"}; // as FileChange::Kind has them

HistoryLine lineOf(const std::string& what, int step)
{
    return std::move(HistoryLine(what).number(step));
}

void put(HistoryLine& line, const base::FileState& state)
{
    line.number(state.size).number(state.modified).number(state.link);
}

void put(HistoryLine& line, const QString& text)
{
    line.text(text.toStdString());
}

base::FileState stateFrom(Reader& line)
{
    base::FileState state;
    state.size = line.number();
    state.modified = line.number();
    state.link = line.number() != 0;
    state.regular = !state.link;
    return state;
}

QString textFrom(Reader& line)
{
    return QString::fromStdString(line.text());
}

void readEdit(Reader& line, FileChange& change)
{
    change.coverChanged = line.number() != 0;
    change.oldCover = line.text();
    change.newCover = line.text();
    while (line.isGood() && !line.isAtEnd()) {
        FileChange::Field field;
        field.name = textFrom(line);
        field.old = textFrom(line);
        field.now = textFrom(line);
        change.fields.append(field);
    }
}

int smallNumber(Reader& line)
{
    const std::int64_t number = line.number();
    return number >= 0 && number <= std::numeric_limits<int>::max() ? int(number) : -1;
}

/// What stands behind the numbers of step and change.
FileChange changeFrom(Reader& line, FileChange::Kind kind)
{
    FileChange change;
    change.kind = kind;
    change.path = line.text();
    change.before = stateFrom(line);
    if (kind == FileChange::Kind::Trashed) {
        change.trash = line.text();
        change.nameInTrash = line.text();
    } else if (kind == FileChange::Kind::Edited) {
        readEdit(line, change);
    } else if (kind == FileChange::Kind::TakenOut) {
        change.tracks = smallNumber(line);
        change.taken = line.text();
    }
    return change;
}
} // namespace

int HistoryStep::changesLeft() const
{
    return int(std::count_if(changes.begin(), changes.end(),
                             [](const auto& change) { return !change.second.isBack; }));
}

std::string HistorySteps::beginLine(int step, std::int64_t time, const std::string& what)
{
    return lineOf(std::string(beginning), step).number(time).text(what).whole();
}

std::string HistorySteps::changeLine(int step, int number, const FileChange& change)
{
    HistoryLine line = lineOf(std::string(kinds[int(change.kind)]), step);
    line.number(number).text(change.path);
    put(line, change.before);
    if (change.kind == FileChange::Kind::Trashed) {
        line.text(change.trash).text(change.nameInTrash);
    } else if (change.kind == FileChange::Kind::Edited) {
        line.number(change.coverChanged).text(change.oldCover).text(change.newCover);
        for (const FileChange::Field& field : change.fields) {
            put(line, field.name);
            put(line, field.old);
            put(line, field.now);
        }
    } else if (change.kind == FileChange::Kind::TakenOut) {
        line.number(change.tracks).text(change.taken);
    }
    return line.whole();
}

std::string HistorySteps::notDoneLine(int step, int number)
{
    return lineOf("not-done", step).number(number).whole();
}

std::string HistorySteps::leftLine(int step, int number, const base::FileState& after)
{
    HistoryLine line = lineOf("left", step);
    put(line.number(number), after);
    return line.whole();
}

std::string HistorySteps::backLine(int step, int number, const base::FileState& now)
{
    HistoryLine line = lineOf("back", step);
    put(line.number(number), now);
    return line.whole();
}

std::string HistorySteps::triedLine(int step)
{
    return lineOf("tried", step).whole();
}

std::string HistorySteps::endLine(int step)
{
    return lineOf("end", step).whole();
}

std::optional<int> HistorySteps::stepOf(std::string_view line)
{
    Reader reader(line);
    const int step = smallNumber(reader);
    return reader.isGood() && step > 0 ? std::make_optional(step) : std::nullopt;
}

std::optional<base::FileState> HistorySteps::left(const FileChange& edit) const
{
    return edit.after ? std::make_optional(since(edit.path, *edit.after)) : std::nullopt;
}

base::FileState HistorySteps::found(const FileChange& change) const
{
    return since(change.path, change.before);
}

/// The state that one of the path became by edits and their taking back.
base::FileState HistorySteps::since(const std::string& path, base::FileState state) const
{
    const auto events = m_again.find(path);
    if (events == m_again.end())
        return state;
    for (const auto& [was, is] : events->second)
        if (state.looksLike(was))
            state = is;
    return state;
}

void HistorySteps::tookBack(FileChange& change, const base::FileState& now)
{
    change.isBack = true;
    if (change.kind == FileChange::Kind::Edited)
        m_again[change.path].emplace_back(change.before, now);
}

std::optional<int> HistorySteps::begunBy(std::string_view line)
{
    return Reader(line).what() == beginning ? stepOf(line) : std::nullopt;
}

void HistorySteps::take(std::string_view line)
{
    Reader reader(line);
    const int number = smallNumber(reader);
    if (!reader.isGood() || number < 1)
        return;
    if (reader.what() == beginning) {
        HistoryStep begun;
        begun.number = number;
        begun.time = reader.number();
        begun.what = reader.text();
        if (reader.isGood())
            m_steps.insert_or_assign(number, begun);
        return;
    }
    const auto step = m_steps.find(number);
    if (step == m_steps.end())
        return;
    if (reader.what() == "end")
        step->second.isEnded = true;
    else if (reader.what() == "tried")
        step->second.wasTried = true;
    else
        takeChange(step->second, reader);
}

void HistorySteps::takeChange(HistoryStep& step, HistoryLine::Reader& line)
{
    const int number = smallNumber(line);
    const auto* const kind = std::find(std::begin(kinds), std::end(kinds), line.what());
    if (kind != std::end(kinds)) {
        FileChange change = changeFrom(line, FileChange::Kind(kind - std::begin(kinds)));
        if (line.isGood())
            step.changes.insert_or_assign(number, std::move(change));
        return;
    }
    const auto change = step.changes.find(number);
    if (change == step.changes.end())
        return;
    if (line.what() == "not-done") {
        step.changes.erase(change);
        return;
    }
    const base::FileState state = stateFrom(line);
    if (line.isGood() && line.what() == "left")
        change->second.after = state;
    else if (line.isGood() && line.what() == "back")
        tookBack(change->second, state);
}
