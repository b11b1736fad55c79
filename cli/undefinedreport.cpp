#include "cli/figures.h"
#include "cli/report.h"
#include "collection/classification.h"

namespace {
/// A line for each song that lacks something, as they come.
class UndefinedReport final : public Report
{
public:
    using Report::Report;

    void begin() override
    {
        if (!isText())
            m_json.begin("undefined", "songs");
    }
    void song(const SongFile& song) override
    {
        const QStringList missing =
            Classification::missingFields(song.title, song.artist, song.album, song.genre);
        if (missing.isEmpty())
            return;
        ++m_undefined;
        note("any");
        for (const QString& field : missing)
            note(field.toLatin1().constData());
        if (isText()) {
            writeRow(missing.join(QLatin1String(", ")), m_console.shown(song.path));
            return;
        }
        m_json.item("song", JsonOutput::song(song));
    }
    void end(const Tally& tally, bool isInterrupted) override
    {
        if (isText()) {
            m_console.say(Figures::count(m_undefined) + " of " +
                          Figures::count(tally.songs, "song", "songs") +
                          (m_undefined == 1 ? " is undefined" : " are undefined"));
            return;
        }
        Json counts;
        tally.addTo(counts);
        m_json.end(counts.number("undefined", m_undefined), isInterrupted);
    }

private:
    void writeRow(const QString& missing, const std::string& path)
    {
        static constexpr int width = 28; // "title, artist, album, genre" and a blank
        if (m_undefined == 1)
            m_console.writeLine(
                m_console.strong(QStringLiteral("missing").leftJustified(width).toStdString() + "song"));
        m_console.writeLine(missing.leftJustified(width).toStdString() + path);
    }

    std::uint64_t m_undefined = 0;
};
} // namespace

std::unique_ptr<Report> makeUndefinedReport(const Order& order, Console& console)
{
    return std::make_unique<UndefinedReport>(order, console);
}
