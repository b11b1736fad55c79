#pragma once

#include "identify/identification.h"

#include <functional>
#include <mutex>
#include <string>

namespace audiocore {
/// One file after the other to identify, and what a cancellation means that comes at just any moment.
class IdentifyJob
{
public:
    using Work = std::function<Identification(const std::string& path, const Cancellation& cancellation)>;

    explicit IdentifyJob(Work work) : m_work(std::move(work)) {}

    /// Takes a file; drops what was found for the last one.
    void open(std::string path);
    /// Drops the file and what was found.
    void close();
    /// Does the work for the opened file and keeps what it found.
    void run();
    /// From any thread: ends the run under way, or else the next one if none has come since the file was
    /// opened. A run that ends just now is cancelled, too, or over.
    void cancel();

    const Identification& found() const { return m_found; }

private:
    enum class Phase { NeverOpened, Opened, Running, Done };

    void begin();
    Identification workOrFailure() const;
    void end(Identification&& found);

    const Work m_work;
    std::mutex m_mutex; ///< guards the phase, and with it when the cancellation is set and cleared
    Phase m_phase = Phase::NeverOpened;
    Cancellation m_cancellation;
    std::string m_path; ///< empty while no file is open
    Identification m_found;
};
} // namespace audiocore
