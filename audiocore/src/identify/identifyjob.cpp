#include "identify/identifyjob.h"

#include "base/log.h"

#include <exception>
#include <new>

using audiocore::Identification;
using audiocore::IdentifyJob;

namespace {
void tellFailure(const std::string& path, const char* fault) noexcept
{
    base::logFailure(path, "is not identified", fault);
}
} // namespace

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
    end(workOrFailure());
}

Identification IdentifyJob::workOrFailure() const
{
    Identification failed;
    try {
        return m_work(m_path, m_cancellation);
    } catch (const std::bad_alloc& shortage) {
        failed.status = IDENTIFY_NO_MEMORY;
        tellFailure(m_path, shortage.what());
    } catch (const std::exception& fault) {
        failed.status = IDENTIFY_NOT_UNDERSTOOD;
        tellFailure(m_path, fault.what());
    }
    return failed;
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
        tellFailure(m_path, "cancelled");
        m_found = Identification();
        m_found.status = IDENTIFY_CANCELLED;
    }
    m_cancellation.clear();
    m_phase = Phase::Done;
}
