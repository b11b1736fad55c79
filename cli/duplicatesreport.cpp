#include "cli/comparing.h"
#include "cli/figures.h"
#include "cli/interruption.h"
#include "cli/report.h"
#include "cli/songtext.h"
#include "collection/songlist.h"

namespace {
/// The groups, once all songs are known.
class DuplicatesReport final : public Report
{
public:
    DuplicatesReport(const Order& order, Console& console) : Report(order, console), m_songs(order.by) {}

    void begin() override
    {
        if (!isText())
            m_json.begin("duplicates", "groups");
    }
    void song(const SongFile& song) override { m_songs.add(song); }
    void end(const Tally& tally, bool /*isInterrupted*/) override
    {
        Comparing comparing(m_order, m_console, [this](const std::string& path, const std::string& reason) {
            failLater(path, reason);
        });
        const QVector<QVector<int>> groups = comparing.groupsOf(m_songs);
        int inGroups = 0;
        for (int i = 0; i < groups.size(); ++i) {
            inGroups += groups.at(i).size();
            write(i + 1, groups.at(i));
        }
        if (!groups.isEmpty())
            note("any");
        if (isText()) {
            m_console.say(Figures::count(std::uint64_t(groups.size()), "group", "groups") + " with " +
                          Figures::count(std::uint64_t(inGroups), "song", "songs") + " of " +
                          Figures::count(tally.songs));
            return;
        }
        Json counts;
        tally.with(comparing.failures()).addTo(counts);
        counts.number("groups", std::uint64_t(groups.size())).number("in_groups", std::uint64_t(inGroups));
        m_json.end(counts, Interruption::hasCome());
    }

private:
    void write(int number, const QVector<int>& group)
    {
        if (isText())
            writeText(number, group);
        else
            writeJson(number, group);
    }
    void writeText(int number, const QVector<int>& group)
    {
        if (number > 1)
            m_console.writeLine(std::string());
        m_console.writeLine(
            SongText::heading(m_songs.at(group.first()), m_order.by, group.size(), m_console));
        for (const int position : group)
            m_console.writeLine("  " + SongText::row(m_songs.at(position), m_console));
    }
    void writeJson(int number, const QVector<int>& group)
    {
        std::vector<std::string> songs;
        for (const int position : group) {
            Json json = JsonOutput::shortSong(m_songs.at(position));
            if (m_order.form == Order::Form::Lines)
                m_json.item("song", json.number("group", std::uint64_t(number)));
            else
                songs.push_back(json.object());
        }
        Json json;
        if (m_order.form == Order::Form::Json)
            m_json.item("group", json.value("songs", Json::list(songs)));
    }

    SongList m_songs;
};
} // namespace

std::unique_ptr<Report> makeDuplicatesReport(const Order& order, Console& console)
{
    return std::make_unique<DuplicatesReport>(order, console);
}
