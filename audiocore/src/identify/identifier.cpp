#include "audiocore/iaudioidentifier.h"

#include "audiocore/soundprint.h"
#include "base/log.h"
#include "base/registry.h"
#include "base/text.h"
#include "enginedoor.h"
#include "identify/fingerprint.h"
#include "identify/identifyjob.h"

#include <cmath>
#include <exception>

using audiocore::Identification;
using audiocore::IdentifyJob;

namespace {
/// What stands behind an identifier.
struct OnlineJob : IdentifyJob
{
    OnlineJob()
        : IdentifyJob([](const std::string& path, const audiocore::Cancellation& cancellation) {
              return audiocore::identifyFile(path, audiocore::sharedServices(), cancellation);
          })
    {
    }
};

using Jobs = base::Registry<OnlineJob>;

class Identifier final : public IAudioIdentifier
{
public:
    std::int32_t Open(const char32_t* path) override
    {
        const std::optional<std::string> name = base::nameFromUtf32(path ? path : U"");
        job()->open(name.value_or(std::string()));
        return name && !name->empty() ? 0 : 1;
    }
    void Reserved1() override {}
    void Reserved2() override {}
    std::int32_t Close() override
    {
        job()->close();
        return 0;
    }
    std::int32_t Identify(std::int32_t, std::int32_t, std::int32_t) override
    {
        const auto own = job();
        own->run();
        const IdentifyStatus status = own->found().status;
        return status == IDENTIFY_FOUND || status == IDENTIFY_FOUND_BY_TAGS ? 0 : 1;
    }
    std::int32_t Cancel() override
    {
        job()->cancel();
        return 0;
    }
    std::int32_t GetStatus() override { return job()->found().status; }
    TagItem GetItem(std::int32_t index) override
    {
        const auto own = job();
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
    std::shared_ptr<IdentifyJob> job() const { return Jobs::instance().of(this); }
};

IAudioIdentifier* makeIdentifier()
{
    return Jobs::instance().make<Identifier>();
}

void destroyIdentifier(IAudioIdentifier* identifier)
{
    if (identifier && Jobs::instance().forget(identifier))
        ::operator delete(identifier);
}

int scoreOf(const IAudioIdentifier* identifier)
{
    return int(std::lround(100 * Jobs::instance().of(identifier)->found().score));
}

bool hasKey()
{
    return !audiocore::configuredAddresses().key.empty();
}

SoundPrintStatus statusOf(const audiocore::RawFingerprint& made)
{
    switch (made.result) {
    case audiocore::Decoding::Done:
        return made.values.empty() ? SOUND_PRINT_TOO_SHORT : SOUND_PRINT_MADE;
    case audiocore::Decoding::Cancelled:
        return SOUND_PRINT_CANCELLED;
    case audiocore::Decoding::Unreadable:
        return SOUND_PRINT_NO_FILE;
    case audiocore::Decoding::NoAudio:
        break;
    }
    return SOUND_PRINT_NO_AUDIO;
}

SoundPrintStatus makePrint(const char* path, const std::atomic<bool>& isCancelled,
                           std::vector<std::uint32_t>& values)
{
    try {
        audiocore::RawFingerprint made =
            audiocore::rawFingerprintOf(path, audiocore::Cancellation(isCancelled));
        const SoundPrintStatus status = statusOf(made);
        values.swap(made.values);
        return status;
    } catch (const std::exception& fault) {
        base::logFailure(path, "no fingerprint can be made", fault.what());
        return SOUND_PRINT_NO_MEMORY;
    }
}
} // namespace

extern "C" ENGINE_DOOR const audiocore::IdentifyDoor melodriftIdentify;
const audiocore::IdentifyDoor melodriftIdentify = {
    {makeIdentifier, destroyIdentifier}, hasKey, scoreOf, makePrint};
