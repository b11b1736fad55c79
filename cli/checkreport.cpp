#include "cli/figures.h"
#include "cli/report.h"

namespace {
/// A line for each problem of a library, as they are found.
class CheckReport final : public Report
{
public:
    using Report::Report;

    void begin() override
    {
        if (!isText())
            m_json.begin("check", "problems");
    }
    void song(const SongFile&) override {}
    void problem(const LibraryProblems::Problem& problem) override
    {
        ++m_problems;
        note("any");
        note(problem.kind);
        if (isText())
            writeRow(problem);
        else
            m_json.item("problem", jsonOf(problem));
    }
    void end(const Tally& tally, bool isInterrupted) override
    {
        if (isText()) {
            m_console.say(Figures::count(m_problems, "problem", "problems") + ", " +
                          Figures::count(tally.songs, "track", "tracks"));
            return;
        }
        Json counts;
        counts.number("tracks", tally.songs).number("problems", m_problems).number("failed", tally.failed);
        m_json.end(counts, isInterrupted);
    }

private:
    /// The track by its file, where it has one.
    std::string nameOf(const SongFile& song) const
    {
        if (!song.path.empty())
            return m_console.shown(song.path);
        if (!song.isTrack())
            return m_console.shown(m_order.library);
        return m_console.shown((song.artist + QStringLiteral(" - ") + song.title).toStdString());
    }
    void writeRow(const LibraryProblems::Problem& problem)
    {
        static constexpr int width = 12; // "identifier" and two blanks
        m_console.writeLine(QString::fromLatin1(problem.kind).leftJustified(width).toStdString() +
                            nameOf(problem.song) + " (" + m_console.shown(problem.more.toStdString()) + ')');
    }
    static Json jsonOf(const LibraryProblems::Problem& problem)
    {
        Json json;
        json.text("problem", std::string(problem.kind)).text("reason", problem.more);
        if (problem.song.isTrack())
            json.members(JsonOutput::shortSong(problem.song));
        return json;
    }

    std::uint64_t m_problems = 0;
};
} // namespace

std::unique_ptr<Report> makeCheckReport(const Order& order, Console& console)
{
    return std::make_unique<CheckReport>(order, console);
}
