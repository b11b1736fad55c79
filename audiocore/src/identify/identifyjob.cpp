#include "identify/identifyjob.h"

#include "log.h"

#include <exception>

using audiocore::IdentifyJob;

void IdentifyJob::open(std::string path)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    // A cancellation from before the first file is meant for it; a later one was for the file before.
    if (m_phase != Phase::NeverOpened)
        m_cancellation.clear();
    m_phase = Phase::Opened;
    m_path = std::move(path);
    m_found = Identification();
}

void IdentifyJob::close()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_phase = Phase::Done;
    m_cancellation.clear();
    m_path.clear();
    m_found = Identification();
}

void IdentifyJob::cancel()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_phase != Phase::Done)
        m_cancellation.cancel();
}

void IdentifyJob::run()
{
    begin();
    Identification found;
    try {
        found = m_work(m_path, m_cancellation);
    } catch (const std::exception& shortage) {
        logLine(m_path, std::string("is not identified: ") + shortage.what());
        found = Identification();
        found.status = IDENTIFY_NO_MEMORY;
    }
    end(std::move(found));
}

void IdentifyJob::begin()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_phase = Phase::Running;
    m_found = Identification();
}

void IdentifyJob::end(Identification&& found)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_found = std::move(found);
    if (m_cancellation.isCancelled()) {
        logLine(m_path, "is not identified: cancelled");
        m_found = Identification();
        m_found.status = IDENTIFY_CANCELLED;
    }
    m_cancellation.clear();
    m_phase = Phase::Done;
}
