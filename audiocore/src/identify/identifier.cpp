#include "audiocore/iaudioidentifier.h"

#include "identify/identification.h"
#include "log.h"
#include "registry.h"
#include "text.h"

using audiocore::Cancellation;
using audiocore::Identification;

namespace {
/// The state behind an identifier. Its phase decides what a Cancel means that comes at just this moment.
class IdentifierState
{
public:
    void open(std::string path)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        // A Cancel from before the first file is meant for it; a later one was for the file before.
        if (m_phase != Phase::NeverOpened)
            m_cancellation.clear();
        m_phase = Phase::Opened;
        m_path = std::move(path);
        m_found = Identification();
    }
    void close()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_phase = Phase::Done;
        m_cancellation.clear();
        m_path.clear();
        m_found = Identification();
    }
    void cancel()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_phase != Phase::Done)
            m_cancellation.cancel();
    }
    void identify()
    {
        begin();
        Identification found;
        try {
            found = audiocore::identifyFile(m_path, audiocore::sharedServices(), m_cancellation);
        } catch (const std::bad_alloc&) {
            audiocore::logLine(m_path, "cannot be identified: memory is short");
            found = Identification();
            found.status = IDENTIFY_NO_MEMORY;
        }
        end(std::move(found));
    }
    const Identification& found() const { return m_found; }

private:
    enum class Phase { NeverOpened, Opened, Running, Done };

    void begin()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_phase = Phase::Running;
        m_found = Identification();
    }
    void end(Identification&& found)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_cancellation.isCancelled()) {
            audiocore::logLine(m_path, "is not identified: cancelled");
            m_found.status = IDENTIFY_CANCELLED;
        } else {
            m_found = std::move(found);
        }
        m_cancellation.clear();
        m_phase = Phase::Done;
    }

    std::mutex m_mutex; ///< guards the phase, and with it when the cancellation is set and cleared
    Phase m_phase = Phase::NeverOpened;
    Cancellation m_cancellation;
    std::string m_path; ///< empty while no file is open
    Identification m_found;
};

bool isSuccess(IdentifyStatus status)
{
    return status == IDENTIFY_FOUND || status == IDENTIFY_FOUND_NO_PICTURE;
}

class Identifier final : public IAudioIdentifier
{
public:
    std::int32_t Open(const char32_t* path) override
    {
        const std::optional<std::string> utf8 = audiocore::toUtf8(path ? path : U"");
        state()->open(utf8.value_or(std::string()));
        return utf8 && !utf8->empty() ? 0 : 1;
    }
    void Reserved1() override {}
    void Reserved2() override {}
    std::int32_t Close() override
    {
        state()->close();
        return 0;
    }
    std::int32_t Identify(std::int32_t, std::int32_t, std::int32_t) override
    {
        const auto own = state();
        own->identify();
        return isSuccess(own->found().status) ? 0 : 1;
    }
    std::int32_t Cancel() override
    {
        state()->cancel();
        return 0;
    }
    std::int32_t GetStatus() override { return state()->found().status; }
    TagItem GetItem(std::int32_t index) override
    {
        const auto own = state();
        const Identification& found = own->found();
        if (index == TAG_PICTURE && !found.picture.empty())
            return {index, index, 1, std::int32_t(found.picture.size()),
                    const_cast<char*>(found.picture.data())};
        if (index < 0 || size_t(index) >= found.texts.size() || found.texts[size_t(index)].empty())
            return {-1, index, 0, 0, nullptr};
        const std::u32string& text = found.texts[size_t(index)];
        return {index, index, 0, std::int32_t(text.size() * sizeof(char32_t)),
                const_cast<char32_t*>(text.c_str())};
    }

private:
    std::shared_ptr<IdentifierState> state() const
    {
        return audiocore::Registry<IdentifierState>::instance().of(this);
    }
};
} // namespace

IAudioIdentifier* CreateIdentifier()
{
    return audiocore::Registry<IdentifierState>::instance().make<Identifier>();
}

void DestroyIdentifier(IAudioIdentifier* identifier)
{
    if (identifier)
        audiocore::Registry<IdentifierState>::instance().destroy(identifier);
}
