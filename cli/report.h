#pragma once

#include "cli/console.h"
#include "cli/json.h"
#include "cli/jsonoutput.h"
#include "cli/order.h"
#include "collection/libraryproblems.h"
#include "collection/songfile.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <utility>

/// What a run counted of what was named.
struct Tally
{
    std::uint64_t songs = 0;
    std::uint64_t failed = 0;
    std::uint64_t notWritable = 0; ///< left out
    std::uint64_t notMusic = 0;    ///< left out, though named
    bool isOfLibrary = false;      ///< then songs are tracks of one, and those that follow count
    std::uint64_t notSongs = 0;    ///< left out: films, podcasts, booklets
    std::uint64_t withoutFile = 0; ///< left out: on no disk of this machine
    std::uint64_t missing = 0;     ///< songs whose files are not there

    void addTo(Json& counts) const;
    /// With those that failed once they had been read.
    Tally with(std::uint64_t failedLater) const;
};

/// What a command says of the songs that it reads. Writes as it goes, or at the end.
class Report
{
public:
    Report(const Order& order, Console& console)
        : m_order(order), m_console(console), m_json(order.form, console)
    {
    }
    virtual ~Report() = default;
    Report(const Report&) = delete;
    Report& operator=(const Report&) = delete;

    virtual void begin() = 0;
    virtual void song(const SongFile& song) = 0;
    /// The file of the library that is told, as it was before it was read.
    virtual void library(const FileState& asRead) { (void)asRead; }
    /// The file of a track that is no song: it stays where it is.
    virtual void otherFile(const std::string& path) { (void)path; }
    /// What is wrong with a library, or with one of its tracks.
    virtual void problem(const LibraryProblems::Problem& problem) { (void)problem; }
    void failed(const std::string& path, const std::string& reason);
    /// False where nothing could come of the rest.
    virtual bool goesOn() const { return true; }
    /// What is to be called now and then while a song takes long.
    void setWaiting(std::function<void()> waiting) { m_waiting = std::move(waiting); }
    virtual void end(const Tally& tally, bool isInterrupted) = 0;
    void note(const char* problem) { m_found.insert(problem); }
    /// What was found, by the names that --fail-on has for it.
    const std::set<std::string>& found() const { return m_found; }
    /// How many files failed that had been read.
    std::uint64_t failedLater() const { return m_failedLater; }

    static std::unique_ptr<Report> of(const Order& order, Console& console);

protected:
    bool isText() const { return m_order.form == Order::Form::Text; }
    bool isOfLibrary() const { return !m_order.library.empty(); }
    void failLater(const std::string& path, const std::string& reason)
    {
        ++m_failedLater;
        failed(path, reason);
    }
    void tellWaiting() const
    {
        if (m_waiting)
            m_waiting();
    }

    const Order& m_order;
    Console& m_console;
    JsonOutput m_json;

private:
    std::function<void()> m_waiting;
    std::set<std::string> m_found;
    std::uint64_t m_failedLater = 0;
};

/// Those that there are.
std::unique_ptr<Report> makeScanReport(const Order& order, Console& console);
std::unique_ptr<Report> makeUndefinedReport(const Order& order, Console& console);
std::unique_ptr<Report> makeDuplicatesReport(const Order& order, Console& console);
std::unique_ptr<Report> makeCleanReport(const Order& order, Console& console);
std::unique_ptr<Report> makeIdentifyReport(const Order& order, Console& console);
std::unique_ptr<Report> makeCheckReport(const Order& order, Console& console);
std::unique_ptr<Report> makeShowReport(const Order& order, Console& console);
