#include "cli/reading.h"

#include "cli/commandline.h"
#include "cli/exitcode.h"
#include "cli/figures.h"
#include "cli/interruption.h"
#include "cli/pathlist.h"
#include "cli/report.h"
#include "collection/songcount.h"
#include "collection/songintake.h"

#include <algorithm>

namespace {
/// Brings what an intake tells to a report, and counts.
class Teller final : public SongIntake::Receiver
{
public:
    Teller(const Order& order, Console& console, Report& report)
        : m_isVerbose(order.isVerbose), m_console(console), m_report(report)
    {
        // What standard input names is known only once it is read.
        if (console.showsProgress() && order.pathsFrom.empty())
            m_count = std::make_unique<SongCount>(order.rules, order.paths);
        m_report.setWaiting([this] { tellProgress(done() - 1); });
    }

    void song(const SongFile& song) override
    {
        ++m_tally.songs;
        m_report.song(song);
        tellProgress(done());
    }
    void failed(const std::string& path, const std::string& reason) override
    {
        ++m_tally.failed;
        m_report.failed(path, reason);
        tellProgress(done());
    }
    void leftOut(const std::string& path, SongIntake::LeftOut why) override
    {
        const bool isMusic = why == SongIntake::LeftOut::NotWritable;
        ++(isMusic ? m_tally.notWritable : m_tally.notMusic);
        if (m_isVerbose)
            m_console.say(m_console.shown(path) + ": left out, " +
                          (isMusic ? "you cannot write it" : "no music by its name"));
    }
    bool goesOn() override { return m_report.goesOn() && !Interruption::hasCome(); }

    const Tally& tally() const { return m_tally; }

private:
    std::uint64_t done() const { return m_tally.songs + m_tally.failed; }
    void tellProgress(std::uint64_t files)
    {
        m_console.progress(files, [this] { return m_count ? m_count->total() : 0; });
    }

    const bool m_isVerbose;
    Console& m_console;
    Report& m_report;
    Tally m_tally;
    std::unique_ptr<SongCount> m_count;
};

void sayWhatIsLeftOut(const Tally& tally, Console& console)
{
    if (tally.notWritable > 0)
        console.say(Figures::count(tally.notWritable) +
                    " left out that you cannot write; --read-only takes them");
    if (tally.notMusic > 0)
        console.say(Figures::count(tally.notMusic) + " left out that are no music by their names");
}

bool hasCommon(const std::set<std::string>& a, const std::set<std::string>& b)
{
    return std::any_of(a.begin(), a.end(), [&b](const std::string& one) { return b.count(one) > 0; });
}
} // namespace

int Reading::run(const Order& order, Console& console)
{
    const std::unique_ptr<Report> report = Report::of(order, console);
    Teller teller(order, console, *report);
    SongIntake intake(order.rules, teller);
    const bool takesAnyFile = order.command == Order::Command::Show;
    report->begin();
    const std::string wrongList = PathList::read(order, [&](const std::string& path) {
        if (takesAnyFile)
            intake.addFile(path);
        else
            intake.add(path);
        return teller.goesOn();
    });
    intake.finish();
    report->end(teller.tally(), Interruption::hasCome());
    sayWhatIsLeftOut(teller.tally(), console);
    if (!wrongList.empty())
        console.complain("--files-from: " + wrongList);
    return exitCode(order, console, *report, teller.tally().failed + (wrongList.empty() ? 0 : 1));
}

int Reading::exitCode(const Order& order, Console& console, const Report& report, std::uint64_t failed)
{
    if (!console.finish()) {
        console.complain("the output could not be written");
        return ExitCode::failed;
    }
    if (Interruption::hasCome())
        return ExitCode::ended;
    if (failed + report.failedLater() > 0)
        return ExitCode::failed;
    return hasCommon(order.failOn, report.found()) ? ExitCode::found : ExitCode::done;
}
