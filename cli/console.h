#pragma once

#include "cli/order.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

/// Standard output and standard error, with a line of progress where the latter is a terminal. One thread.
class Console
{
public:
    explicit Console(const Order& order);
    ~Console();
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    /// Output as it is.
    void write(const std::string& text);
    void writeLine(const std::string& text) { write(text + '\n'); }
    /// A line about the run, on standard error; not when it is to be quiet.
    void say(const std::string& text);
    /// A line about what went wrong, on standard error in any case.
    void complain(const std::string& text);
    /// A path or text of a file as it may be shown in a line: what would control a terminal is "?". Bytes of
    /// a path that are no UTF-8 stay what they are, but for on a terminal.
    std::string shown(const std::string& text) const;
    /// The text in bold letters, where standard output is a terminal that has colours and the user likes
    /// them.
    std::string strong(const std::string& text) const;

    /// Whether there is a terminal to ask on.
    bool canAsk() const { return m_canAsk; }
    /// Asks on the terminal; whether the answer is "yes". Nobody is asked where there is none.
    bool asksFor(const std::string& question);

    /// Whether progress is shown at all.
    bool showsProgress() const { return m_hasProgress; }
    /// What is told from now on is counted from now on.
    void beginProgress() { m_begun = Clock::now(); }
    /// That so many of so many files (0 while that is not known) are done; writes now and then.
    void progress(std::uint64_t done, const std::function<std::uint64_t()>& total);
    /// Takes the progress away and writes all output; false when that could not be done.
    bool finish();

private:
    using Clock = std::chrono::steady_clock;

    void clearProgress();
    std::string progressLine(std::uint64_t done, std::uint64_t total) const;

    const bool m_isQuiet;
    const bool m_isTerminal; ///< standard output
    const bool m_canAsk;
    const bool m_hasColours;
    const bool m_hasProgress;
    bool m_isProgressShown = false;
    Clock::time_point m_begun = Clock::now();
    Clock::time_point m_lastTold = Clock::now();
};
