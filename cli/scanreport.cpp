#include "cli/figures.h"
#include "cli/report.h"
#include "cli/songtext.h"
#include "collection/classification.h"

#include <array>
#include <map>

namespace {
/// What lacks in songs, as the report counts it.
struct Problem
{
    const char* name; ///< of --fail-on and of JSON
    const char* row;
};

constexpr std::array<Problem, 5> problems = {{{"title", "no title"},
                                              {"artist", "no artist"},
                                              {"album", "no album"},
                                              {"genre", "no genre"},
                                              {"cover", "no cover"}}};

/// Counts, per format and problem.
class ScanReport final : public Report
{
public:
    using Report::Report;

    void begin() override
    {
        if (!isText())
            m_json.begin("scan", "failed");
    }
    void song(const SongFile& song) override
    {
        Format& format = m_formats[SongText::format(song)];
        ++format.songs;
        format.bytes += song.bytes;
        format.milliseconds += song.milliseconds;
        const QStringList missing =
            Classification::missingFields(song.title, song.artist, song.album, song.genre);
        if (!missing.isEmpty())
            count("undefined");
        for (const QString& field : missing)
            count(field.toStdString());
        if (song.coverBytes == 0 && !isOfLibrary())
            count("cover");
        if (m_order.form == Order::Form::Lines)
            m_json.item("song", JsonOutput::song(song));
    }
    void end(const Tally& tally, bool isInterrupted) override
    {
        if (isText())
            writeText(tally);
        else
            writeJson(tally, isInterrupted);
    }

private:
    struct Format
    {
        std::uint64_t songs = 0;
        std::uint64_t bytes = 0;
        std::uint64_t milliseconds = 0;
    };

    void count(const std::string& problem)
    {
        note(problem.c_str());
        ++m_problems[problem];
    }
    std::uint64_t countOf(const std::string& problem) const
    {
        const auto place = m_problems.find(problem);
        return place == m_problems.end() ? 0 : place->second;
    }
    Format all() const
    {
        Format sum;
        for (const auto& [name, format] : m_formats) {
            sum.songs += format.songs;
            sum.bytes += format.bytes;
            sum.milliseconds += format.milliseconds;
        }
        return sum;
    }

    void writeRow(const std::string& name, std::uint64_t number, const std::string& more = std::string())
    {
        const int width = isOfLibrary() ? 34 : 20; // kinds are whole words there
        const QString row = QString::fromStdString(name).leftJustified(width) +
                            QString::fromStdString(Figures::count(number)).rightJustified(11);
        m_console.writeLine(row.toStdString() + more);
    }
    void writeFormat(const std::string& name, const Format& format)
    {
        const auto right = [](const std::string& text) {
            return QString::fromStdString(text).rightJustified(14).toStdString();
        };
        writeRow(name, format.songs,
                 right(Figures::length(format.milliseconds)) + right(Figures::size(format.bytes)));
    }
    void writeText(const Tally& tally)
    {
        writeFormat("songs", all());
        for (const auto& [name, format] : m_formats)
            writeFormat("  " + name, format);
        writeRow("undefined", countOf("undefined"));
        for (const Problem& problem : problems)
            if (std::string(problem.name) != "cover")
                writeRow(std::string("  ") + problem.row, countOf(problem.name));
        if (isOfLibrary()) {
            writeRow("missing files", tally.missing);
            writeRow("tracks without file", tally.withoutFile);
            writeRow("tracks of no song", tally.notSongs);
        } else {
            writeRow("no cover", countOf("cover"));
        }
        writeRow("failed", tally.failed);
        if (tally.notWritable > 0)
            writeRow("not writable", tally.notWritable);
    }
    void writeJson(const Tally& tally, bool isInterrupted)
    {
        Json counts;
        tally.addTo(counts);
        const Format sum = all();
        counts.number("bytes", sum.bytes).number("milliseconds", sum.milliseconds);
        Json formats;
        for (const auto& [name, format] : m_formats) {
            Json one;
            one.number("songs", format.songs).number("bytes", format.bytes);
            one.number("milliseconds", format.milliseconds);
            formats.value(name.c_str(), one.object());
        }
        Json missing;
        for (const Problem& problem : problems)
            if (std::string(problem.name) != "cover" || !isOfLibrary())
                missing.number(problem.name, countOf(problem.name));
        counts.value("formats", formats.object()).number("undefined", countOf("undefined"));
        m_json.end(counts.value("missing", missing.object()), isInterrupted);
    }

    std::map<std::string, Format> m_formats;
    std::map<std::string, std::uint64_t> m_problems;
};
} // namespace

std::unique_ptr<Report> makeScanReport(const Order& order, Console& console)
{
    return std::make_unique<ScanReport>(order, console);
}
