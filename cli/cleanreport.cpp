#include "cli/comparing.h"
#include "cli/figures.h"
#include "cli/interruption.h"
#include "cli/report.h"
#include "cli/songtext.h"
#include "collection/cleaningplan.h"
#include "collection/formats.h"
#include "collection/history.h"
#include "collection/librarytracks.h"
#include "collection/songlist.h"
#include "collection/trackcleaning.h"

namespace {
using Decision = CleaningPlan::Decision;
using Fate = CleaningPlan::Fate;

const char* nameOf(Fate fate)
{
    return fate == Fate::Kept ? "kept" : fate == Fate::Goes ? "goes" : "stays";
}

/// Of a track what becomes of it, whatever becomes of its file.
const char* nameOf(const Decision& decision)
{
    return nameOf(decision.losesTrack ? Fate::Goes : decision.fate);
}

/// With what is said of a file that stays though its track goes.
QString reasonOf(const Decision& decision)
{
    return decision.losesTrack && decision.fate != Fate::Goes
               ? QStringLiteral("the track alone: %1").arg(decision.reason)
               : decision.reason;
}

SongCopy copyOf(const SongFile& song)
{
    if (song.isTrack())
        return LibraryTracks::copyOf(song);
    return {song.path,
            song.state,
            {Formats::listedName(song.format), song.bitRate / 1000, song.sampleRate, song.milliseconds},
            0,
            {}};
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
    void library(const FileState& asRead) override { m_library = asRead; }
    void otherFile(const std::string& path) override
    {
        if (!path.empty())
            m_others.push_back(path);
    }
    void end(const Tally& tally, bool /*isInterrupted*/) override
    {
        Comparing comparing(m_order, m_console, [this](const std::string& path, const std::string& reason) {
            failLater(path, reason);
        });
        m_groups = comparing.groupsOf(m_songs);
        m_notCompared = comparing.failures();
        const CleaningPlan plan(copies(), m_order.keep, others());
        for (int i = 0; i < plan.groups().size(); ++i)
            write(i, plan.groups().at(i));
        if (isText())
            sayPlan(plan);
        if (plan.going() + plan.tracksGoing() > 0 && isWanted(plan))
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

    /// The files of tracks that are in no group, and of those that are no songs.
    std::vector<std::string> others() const
    {
        std::vector<std::string> others = m_others;
        if (!isOfLibrary())
            return others;
        std::vector<bool> isInGroup(std::size_t(m_songs.size()));
        for (const QVector<int>& group : m_groups)
            for (const int position : group)
                isInGroup[std::size_t(position)] = true;
        for (int position = 0; position < m_songs.size(); ++position)
            if (!isInGroup[std::size_t(position)])
                others.push_back(m_songs.at(position).path);
        return others;
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
        const QString fate = QString::fromLatin1(nameOf(decision)).leftJustified(6);
        const QString why = reasonOf(decision);
        const std::string reason = why.isEmpty() ? std::string() : " (" + why.toStdString() + ")";
        m_console.writeLine("  " + fate.toStdString() + SongText::row(song, m_console) + reason);
    }
    /// The song's object, which is written where each has a line.
    std::string writeSong(int group, const Decision& decision, const SongFile& song)
    {
        Json json = JsonOutput::shortSong(song);
        json.text("fate", std::string(nameOf(decision))).text("reason", decision.reason);
        if (isOfLibrary())
            json.flag("file_goes", decision.fate == Fate::Goes);
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
        const std::string tracks =
            isOfLibrary() ? countOfTracks(std::uint64_t(plan.tracksGoing())) + " to be taken out, "
                          : std::string();
        m_console.writeLine(tracks + countOfFiles(std::uint64_t(plan.going())) + where +
                            Figures::size(std::uint64_t(plan.bytesFreed())));
    }
    static std::string countOfFiles(std::uint64_t number) { return Figures::count(number, "file", "files"); }
    static std::string countOfTracks(std::uint64_t number)
    {
        return Figures::count(number, "track", "tracks");
    }
    bool isWanted(const CleaningPlan& plan)
    {
        const std::string tracks =
            isOfLibrary() ? countOfTracks(std::uint64_t(plan.tracksGoing())) + " and " : std::string();
        return m_order.isAgreed || m_console.asksFor("Type yes to have " + tracks +
                                                     countOfFiles(std::uint64_t(plan.going())) + " go: ");
    }
    void carryOut(const CleaningPlan& plan)
    {
        QString whyNot;
        const std::unique_ptr<ChangeStep> step = History(History::usersFolder()).begin(m_order.words, whyNot);
        if (!step) {
            failLater(History::usersFolder(), whyNot.toStdString());
            return;
        }
        m_console.beginProgress();
        const auto remove = [&](const std::string& path, const FileState& state) {
            return m_order.deletesForGood ? step->deleteForGood(path, state) : step->moveToTrash(path, state);
        };
        if (isOfLibrary())
            cleanLibrary(plan, *step, remove);
        else
            plan.carryOut(
                remove,
                [this](const Decision& decision, const QString& failure) {
                    tell(decision, {false, failure.isEmpty(), failure});
                },
                [this, &plan](int done) {
                    showProgress(done, plan.going());
                    return !Interruption::hasCome();
                });
        m_step = step->isEmpty() ? 0 : step->number();
    }
    void cleanLibrary(const CleaningPlan& plan, ChangeStep& step, const CleaningPlan::Remove& remove)
    {
        int done = 0;
        const QString whyNot = TrackCleaning(plan, m_order.library, m_library, step)
                                   .carryOut(
                                       remove,
                                       [&](const Decision& decision, const TrackCleaning::Outcome& outcome) {
                                           tell(decision, outcome);
                                           showProgress(++done, plan.tracksGoing());
                                       },
                                       [] { return !Interruption::hasCome(); });
        if (!whyNot.isEmpty())
            failLater(m_order.library, whyNot.toStdString());
    }
    void showProgress(int done, int of)
    {
        m_console.progress(std::uint64_t(done), [of] { return std::uint64_t(of); });
    }
    void tell(const Decision& decision, const TrackCleaning::Outcome& outcome)
    {
        m_tracksGone += outcome.isOut;
        if (outcome.isGone) {
            ++m_gone;
            m_bytesFreed += std::uint64_t(decision.freed);
        }
        if (!outcome.whyNot.isEmpty())
            failLater(decision.copy.path, outcome.whyNot.toStdString());
    }

    void sayWhatIsDone(const CleaningPlan& plan)
    {
        const std::string tracks =
            isOfLibrary() ? countOfTracks(m_tracksGone) + " taken out, " : std::string();
        if (m_step > 0 && !m_order.deletesForGood)
            m_console.say(tracks + countOfFiles(m_gone) + " moved into the trash; melodrift-cli undo " +
                          std::to_string(m_step) + " brings them back");
        else if (m_step > 0 && m_tracksGone > 0)
            m_console.say(tracks + countOfFiles(m_gone) + " deleted; melodrift-cli undo " +
                          std::to_string(m_step) + " brings the tracks back");
        else if (m_gone > 0)
            m_console.say(countOfFiles(m_gone) + " deleted");
        else if (plan.going() + plan.tracksGoing() > 0 && failedLater() == m_notCompared)
            m_console.say("nothing was done; --yes does it");
    }
    void writeCounts(const CleaningPlan& plan, const Tally& tally)
    {
        Json counts;
        tally.with(m_notCompared).addTo(counts);
        counts.number("groups", std::uint64_t(m_groups.size())).number("going", std::uint64_t(plan.going()));
        counts.number("gone", m_gone).number("bytes_freed", m_bytesFreed);
        if (isOfLibrary())
            counts.number("tracks_going", std::uint64_t(plan.tracksGoing()))
                .number("tracks_gone", m_tracksGone);
        counts.number("not_gone", failedLater() - m_notCompared).number("step", std::uint64_t(m_step));
        m_json.end(counts, Interruption::hasCome());
    }

    SongList m_songs;
    QVector<QVector<int>> m_groups;
    int m_step = 0; ///< of the history; 0 where nothing was changed
    std::uint64_t m_notCompared = 0;
    FileState m_library;
    std::vector<std::string> m_others; ///< paths of tracks that are no songs
    std::uint64_t m_gone = 0;          ///< files
    std::uint64_t m_tracksGone = 0;
    std::uint64_t m_bytesFreed = 0;
};
} // namespace

std::unique_ptr<Report> makeCleanReport(const Order& order, Console& console)
{
    return std::make_unique<CleanReport>(order, console);
}
