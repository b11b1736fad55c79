#include "cli/figures.h"
#include "cli/interruption.h"
#include "cli/report.h"
#include "cli/songtext.h"
#include "collection/cleaningplan.h"
#include "collection/formats.h"
#include "collection/history.h"
#include "collection/songlist.h"

namespace {
using Decision = CleaningPlan::Decision;
using Fate = CleaningPlan::Fate;

const char* nameOf(Fate fate)
{
    return fate == Fate::Kept ? "kept" : fate == Fate::Goes ? "goes" : "stays";
}

SongCopy copyOf(const SongFile& song)
{
    return {song.path,
            song.state,
            {Formats::listedName(song.format), song.bitRate / 1000, song.sampleRate, song.milliseconds}};
}

/// What would be deleted and why the rest stays; and then, where that is wanted, it goes.
class CleanReport final : public Report
{
public:
    CleanReport(const Order& order, Console& console) : Report(order, console), m_songs(order.by, true) {}

    void begin() override
    {
        if (!isText())
            m_json.begin("clean", "groups");
    }
    void song(const SongFile& song) override { m_songs.add(song); }
    void end(const Tally& tally, bool isInterrupted) override
    {
        if (!isInterrupted) // of half of the songs nothing can be said
            m_groups = m_songs.groups();
        const CleaningPlan plan(copies(), m_order.keep);
        for (int i = 0; i < plan.groups().size(); ++i)
            write(i, plan.groups().at(i));
        if (isText())
            sayPlan(plan);
        if (plan.going() > 0 && isWanted(plan))
            carryOut(plan);
        if (isText())
            sayWhatIsDone(plan);
        else
            writeCounts(plan, tally);
    }

private:
    QVector<QVector<SongCopy>> copies() const
    {
        QVector<QVector<SongCopy>> groups;
        for (const QVector<int>& group : m_groups) {
            groups.append(QVector<SongCopy>());
            for (const int position : group)
                groups.last().append(copyOf(m_songs.at(position)));
        }
        return groups;
    }

    void write(int group, const CleaningPlan::Group& decisions)
    {
        const QVector<int>& positions = m_groups.at(group);
        if (isText())
            writeHeading(group);
        std::vector<std::string> songs;
        for (int i = 0; i < decisions.size(); ++i) {
            const SongFile song = m_songs.at(positions.at(i));
            if (isText())
                writeRow(decisions.at(i), song);
            else
                songs.push_back(writeSong(group, decisions.at(i), song));
        }
        Json json;
        if (m_order.form == Order::Form::Json)
            m_json.item("group", json.value("songs", Json::list(songs)));
    }
    void writeHeading(int group)
    {
        const QVector<int>& positions = m_groups.at(group);
        if (group > 0)
            m_console.writeLine(std::string());
        m_console.writeLine(
            SongText::heading(m_songs.at(positions.first()), m_order.by, positions.size(), m_console));
    }
    void writeRow(const Decision& decision, const SongFile& song)
    {
        const QString fate = QString::fromLatin1(nameOf(decision.fate)).leftJustified(6);
        const std::string reason =
            decision.reason.isEmpty() ? std::string() : " (" + decision.reason.toStdString() + ")";
        m_console.writeLine("  " + fate.toStdString() + SongText::row(song, m_console) + reason);
    }
    /// The song's object, which is written where each has a line.
    std::string writeSong(int group, const Decision& decision, const SongFile& song)
    {
        Json json = JsonOutput::shortSong(song);
        json.text("fate", std::string(nameOf(decision.fate))).text("reason", decision.reason);
        json.number("bytes_freed", std::uint64_t(decision.freed));
        if (m_order.form == Order::Form::Lines)
            m_json.item("song", json.number("group", std::uint64_t(group) + 1));
        return json.object();
    }

    void sayPlan(const CleaningPlan& plan)
    {
        if (!m_groups.isEmpty())
            m_console.writeLine(std::string());
        const std::string where = m_order.deletesForGood ? " to be deleted for good, " : " for the trash, ";
        m_console.writeLine(Figures::count(std::uint64_t(plan.going()), "file", "files") + where +
                            Figures::size(std::uint64_t(plan.bytesFreed())));
    }
    bool isWanted(const CleaningPlan& plan)
    {
        return m_order.isAgreed ||
               m_console.asksFor("Type yes to have " +
                                 Figures::count(std::uint64_t(plan.going()), "file", "files") + " go: ");
    }
    void carryOut(const CleaningPlan& plan)
    {
        QString whyNot;
        const std::unique_ptr<ChangeStep> step = History(History::usersFolder()).begin(m_order.words, whyNot);
        if (!step) {
            failLater(History::usersFolder(), whyNot.toStdString());
            return;
        }
        plan.carryOut(
            [&](const std::string& path, const FileState& state) {
                return m_order.deletesForGood ? step->deleteForGood(path, state)
                                              : step->moveToTrash(path, state);
            },
            [this](const Decision& decision, const QString& failure) { tell(decision, failure); },
            [](int) { return !Interruption::hasCome(); });
        m_step = step->isEmpty() ? 0 : step->number();
    }
    void tell(const Decision& decision, const QString& failure)
    {
        if (failure.isEmpty()) {
            ++m_gone;
            m_bytesFreed += std::uint64_t(decision.freed);
        } else {
            failLater(decision.copy.path, failure.toStdString());
        }
    }

    void sayWhatIsDone(const CleaningPlan& plan)
    {
        if (m_step > 0 && !m_order.deletesForGood)
            m_console.say(Figures::count(m_gone, "file", "files") +
                          " moved into the trash; melodrift-cli undo " + std::to_string(m_step) +
                          " brings them back");
        else if (m_gone > 0)
            m_console.say(Figures::count(m_gone, "file", "files") + " deleted");
        else if (plan.going() > 0 && failedLater() == 0)
            m_console.say("nothing was done; --yes does it");
    }
    void writeCounts(const CleaningPlan& plan, const Tally& tally)
    {
        Json counts;
        tally.addTo(counts);
        counts.number("groups", std::uint64_t(m_groups.size())).number("going", std::uint64_t(plan.going()));
        counts.number("gone", m_gone).number("bytes_freed", m_bytesFreed);
        counts.number("not_gone", failedLater()).number("step", std::uint64_t(m_step));
        m_json.end(counts, Interruption::hasCome());
    }

    SongList m_songs;
    QVector<QVector<int>> m_groups;
    int m_step = 0; ///< of the history; 0 where nothing was changed
    std::uint64_t m_gone = 0;
    std::uint64_t m_bytesFreed = 0;
};
} // namespace

std::unique_ptr<Report> makeCleanReport(const Order& order, Console& console)
{
    return std::make_unique<CleanReport>(order, console);
}
