#pragma once

#include "cli/console.h"
#include "cli/json.h"
#include "cli/jsonoutput.h"
#include "cli/order.h"
#include "collection/songfile.h"

#include <cstdint>
#include <memory>
#include <set>
#include <string>

/// What a run counted of what was named.
struct Tally
{
    std::uint64_t songs = 0;
    std::uint64_t failed = 0;
    std::uint64_t notWritable = 0; ///< left out
    std::uint64_t notMusic = 0;    ///< left out, though named

    void addTo(Json& counts) const;
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
    void failed(const std::string& path, const std::string& reason);
    virtual void end(const Tally& tally, bool isInterrupted) = 0;
    /// What was found, by the names that --fail-on has for it.
    const std::set<std::string>& found() const { return m_found; }
    /// How many files failed that had been read.
    std::uint64_t failedLater() const { return m_failedLater; }

    static std::unique_ptr<Report> of(const Order& order, Console& console);

protected:
    bool isText() const { return m_order.form == Order::Form::Text; }
    void failLater(const std::string& path, const std::string& reason)
    {
        ++m_failedLater;
        failed(path, reason);
    }
    void note(const char* problem) { m_found.insert(problem); }

    const Order& m_order;
    Console& m_console;
    JsonOutput m_json;

private:
    std::set<std::string> m_found;
    std::uint64_t m_failedLater = 0;
};

/// Those that there are.
std::unique_ptr<Report> makeScanReport(const Order& order, Console& console);
std::unique_ptr<Report> makeUndefinedReport(const Order& order, Console& console);
std::unique_ptr<Report> makeDuplicatesReport(const Order& order, Console& console);
std::unique_ptr<Report> makeCleanReport(const Order& order, Console& console);
std::unique_ptr<Report> makeShowReport(const Order& order, Console& console);
