#include "cli/asking.h"

#include "audiocore/iaudioidentifier.h"
#include "cli/corelog.h"
#include "cli/interruption.h"

#include <chrono>
#include <future>
#include <system_error>

namespace {
constexpr auto betweenLooks = std::chrono::milliseconds(50);
constexpr int mostInVain = 3;

/// With the log of the thread that identifies.
Asking::Answer identify(SongIdentifier& identifier)
{
    CoreLog::takeLast();
    FoundSong found = identifier.identify();
    return {std::move(found), CoreLog::takeLast()};
}

std::future<Asking::Answer> begin(SongIdentifier& identifier)
{
    try {
        return std::async(std::launch::async, [&identifier] { return identify(identifier); });
    } catch (const std::system_error&) { // no further thread
        std::promise<Asking::Answer> answer;
        answer.set_value(identify(identifier));
        return answer.get_future();
    }
}
} // namespace

Asking::Answer Asking::ask(const std::string& path)
{
    if (m_inVain == mostInVain) {
        Answer none;
        none.found.status = IDENTIFY_NO_CONNECTION;
        return none;
    }
    Answer answer = askServices(path);
    m_inVain = answer.found.status == IDENTIFY_NO_CONNECTION ? m_inVain + 1 : 0;
    return answer;
}

Asking::Answer Asking::askServices(const std::string& path)
{
    m_identifier.open(path);
    std::future<Answer> answer = begin(m_identifier);
    for (bool isGivenUp = false; answer.wait_for(betweenLooks) != std::future_status::ready;) {
        m_wait();
        if (!isGivenUp && Interruption::hasCome()) {
            isGivenUp = true;
            m_identifier.cancel();
        }
    }
    return answer.get();
}
