#include "audiocore/iaudioidentifier.h"

#include "base/registry.h"
#include "base/text.h"
#include "enginedoor.h"
#include "identify/identifyjob.h"

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
        const std::optional<std::string> utf8 = base::toUtf8(path ? path : U"");
        job()->open(utf8.value_or(std::string()));
        return utf8 && !utf8->empty() ? 0 : 1;
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

bool hasKey()
{
    return !audiocore::configuredAddresses().key.empty();
}
} // namespace

extern "C" ENGINE_DOOR const audiocore::IdentifyDoor melodriftIdentify;
const audiocore::IdentifyDoor melodriftIdentify = {{makeIdentifier, destroyIdentifier}, hasKey};
