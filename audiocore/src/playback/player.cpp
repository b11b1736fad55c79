#include "audiocore/iaudioplayer.h"

#include "base/log.h"
#include "base/registry.h"
#include "base/text.h"
#include "enginedoor.h"
#include "playback/playback.h"
#include "tags/parsedmedia.h"

#include <algorithm>
#include <limits>

namespace {
using audiocore::Playback;

struct PlayerContent
{
    std::unique_ptr<Playback> playback; ///< null while there is no file
};

using Players = base::Registry<PlayerContent>;

constexpr std::chrono::milliseconds longestOpening(450);

std::int32_t bounded(std::int64_t number)
{
    return std::int32_t(std::clamp<std::int64_t>(number, 0, std::numeric_limits<std::int32_t>::max()));
}

class Player final : public IAudioPlayer
{
public:
    std::int32_t Open(const char32_t* path) override
    {
        const auto latest = std::chrono::steady_clock::now() + longestOpening;
        const auto own = content();
        own->playback.reset();
        const std::optional<std::string> utf8 = base::toUtf8(path ? path : U"");
        if (!utf8 || utf8->empty()) {
            base::logLine("a file", utf8 ? "no path was given" : "has a name that is not valid text");
            return 1;
        }
        const auto media = audiocore::parsedMedia(*utf8);
        if (media->format == AUDIO_FORMAT_UNKNOWN)
            return 1;
        own->playback = std::make_unique<Playback>(*utf8, media->demuxer, media->properties.milliseconds,
                                                   media->audioBegin);
        return own->playback->waitUntilOpen(latest) == Playback::Phase::Failed ? 1 : 0;
    }
    void Reserved1() override {}
    void Reserved2() override {}
    void Reserved3() override {}
    std::int32_t Play() override
    {
        const auto own = content();
        if (own->playback)
            own->playback->play();
        return own->playback ? 0 : 1;
    }
    std::int32_t Pause() override
    {
        const auto own = content();
        if (own->playback)
            own->playback->pause();
        return own->playback ? 0 : 1;
    }
    void Reserved6() override {}
    std::int32_t GetState() override
    {
        const auto own = content();
        const auto phase = own->playback ? own->playback->phase() : Playback::Phase::Failed;
        if (phase == Playback::Phase::Failed)
            return PLAYER_STATE_EMPTY;
        if (phase == Playback::Phase::Opening)
            return PLAYER_STATE_OPENING;
        if (own->playback->finished())
            return PLAYER_STATE_FINISHED;
        return own->playback->playing() ? PLAYER_STATE_PLAYING : PLAYER_STATE_PAUSED;
    }
    std::int32_t GetDuration() override
    {
        const auto own = content();
        return own->playback ? bounded(own->playback->duration()) : 0;
    }
    std::int32_t GetPosition() override
    {
        const auto own = content();
        return own->playback ? bounded(own->playback->position()) : 0;
    }
    std::int32_t Seek(std::uint64_t position) override
    {
        const auto own = content();
        constexpr auto most = std::uint64_t(std::numeric_limits<std::int64_t>::max());
        if (own->playback)
            own->playback->seek(std::int64_t(std::min(position, most)));
        return own->playback ? 0 : 1;
    }

private:
    std::shared_ptr<PlayerContent> content() const { return Players::instance().of(this); }
};

bool isSilent(const IAudioPlayer* player)
{
    const auto content = Players::instance().of(player);
    return content->playback && content->playback->silent();
}

IAudioPlayer* makePlayer()
{
    audiocore::setEngineLocale();
    return Players::instance().make<Player>();
}

void destroyPlayer(IAudioPlayer* player)
{
    if (player && Players::instance().forget(player))
        ::operator delete(player);
}
} // namespace

extern "C" ENGINE_DOOR const audiocore::PlaybackDoor melodriftPlayback;
const audiocore::PlaybackDoor melodriftPlayback = {{makePlayer, destroyPlayer}, isSilent};
