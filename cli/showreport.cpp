#include "cli/figures.h"
#include "cli/report.h"
#include "collection/formats.h"

namespace {
/// All that is known of each song, as they come.
class ShowReport final : public Report
{
public:
    using Report::Report;

    void begin() override
    {
        if (!isText())
            m_json.begin("show", "songs");
    }
    void song(const SongFile& song) override
    {
        if (isText()) {
            writeText(song);
            return;
        }
        m_json.item("song", JsonOutput::song(song));
    }
    void end(const Tally& tally, bool isInterrupted) override
    {
        if (isText())
            return;
        Json counts;
        tally.addTo(counts);
        m_json.end(counts, isInterrupted);
    }

private:
    void writeRow(const char* name, const std::string& text)
    {
        m_console.writeLine("  " + QString::fromLatin1(name).leftJustified(10).toStdString() +
                            (text.empty() ? "-" : m_console.shown(text)));
    }
    void writeText(const SongFile& song)
    {
        const auto number = [](int value) { return value > 0 ? std::to_string(value) : std::string(); };
        m_console.writeLine(m_console.strong(m_console.shown(song.path)));
        writeRow("title", song.title.toStdString());
        writeRow("artist", song.artist.toStdString());
        writeRow("album", song.album.toStdString());
        writeRow("genre", song.genre.toStdString());
        writeRow("year", number(song.year));
        writeRow("track", number(song.track));
        writeRow("format", Formats::listedName(song.format).toStdString());
        writeRow("length", Figures::length(song.milliseconds));
        writeRow("bit rate", Figures::bitRate(song.bitRate));
        writeRow("samples", Figures::sampleRate(song.sampleRate));
        writeRow("file", Figures::size(song.bytes));
        writeRow("cover", song.coverBytes > 0 ? Figures::size(song.coverBytes) : std::string());
    }
};
} // namespace

std::unique_ptr<Report> makeShowReport(const Order& order, Console& console)
{
    return std::make_unique<ShowReport>(order, console);
}
