#include "cli/libraryreading.h"

#include "cli/figures.h"
#include "cli/interruption.h"
#include "cli/reading.h"
#include "cli/report.h"
#include "collection/libraryproblems.h"
#include "collection/librarytracks.h"

namespace {
/// Brings the tracks of a library to a report, and counts.
class TrackTeller
{
public:
    TrackTeller(const Order& order, Console& console, Report& report)
        : m_order(order), m_console(console), m_report(report), m_tracks(order.library)
    {
        m_tally.isOfLibrary = true;
        report.library(m_tracks.asRead());
    }

    const Tally& tally() const { return m_tally; }

    void tell()
    {
        if (!m_tracks.problem().empty()) {
            ++m_tally.failed;
            m_report.failed(m_order.library, m_tracks.problem());
        } else if (m_order.command == Order::Command::Check) {
            tellProblems();
        } else {
            for (int position = 0; position < m_tracks.count() && goesOn(position); ++position)
                tell(m_tracks.at(position));
        }
    }

private:
    bool goesOn(int done)
    {
        m_console.progress(std::uint64_t(done), [this] { return std::uint64_t(m_tracks.count()); });
        return !Interruption::hasCome();
    }
    void tellProblems()
    {
        const auto tell = [this](const LibraryProblems::Problem& problem) { m_report.problem(problem); };
        LibraryProblems::find(m_tracks, tell, [this](int done) {
            m_tally.songs = std::uint64_t(done) + 1;
            return goesOn(done);
        });
    }
    void tell(const LibraryTracks::Track& track)
    {
        if (track.media == LibraryTracks::Media::None || !track.isSong) {
            ++(track.isSong ? m_tally.withoutFile : m_tally.notSongs);
            m_report.otherFile(track.song.path);
            return;
        }
        ++m_tally.songs;
        if (track.media == LibraryTracks::Media::Missing) {
            ++m_tally.missing;
            m_report.note("missing");
        }
        m_report.song(track.song);
    }

    const Order& m_order;
    Console& m_console;
    Report& m_report;
    LibraryTracks m_tracks;
    Tally m_tally;
};

void sayWhatIsLeftOutOf(const Tally& tally, Console& console)
{
    if (tally.notSongs > 0)
        console.say(Figures::count(tally.notSongs) + " left out that are no songs");
    if (tally.withoutFile > 0)
        console.say(Figures::count(tally.withoutFile) + " left out that have no file on this machine");
}
} // namespace

int LibraryReading::run(const Order& order, Console& console)
{
    const std::unique_ptr<Report> report = Report::of(order, console);
    report->begin();
    TrackTeller teller(order, console, *report);
    teller.tell();
    report->end(teller.tally(), Interruption::hasCome());
    if (order.command != Order::Command::Scan)
        sayWhatIsLeftOutOf(teller.tally(), console);
    return Reading::exitCode(order, console, *report, teller.tally().failed);
}
