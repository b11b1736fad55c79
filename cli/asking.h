#pragma once

#include "collection/songidentifier.h"

#include <functional>
#include <string>

/// Has one song after the other identified, until the user interrupts it: then a song that is asked for is
/// given up within a fifth of a second.
class Asking
{
public:
    struct Answer
    {
        FoundSong found;
        std::string log; ///< its last line in the audio core's log, where there was one
    };

    /// `wait` is called now and then while an answer is waited for.
    explicit Asking(std::function<void()> wait) : m_wait(std::move(wait)) {}

    /// Where the services were out of reach several times in a row nobody is asked any more.
    Answer ask(const std::string& path);

private:
    Answer askServices(const std::string& path);

    const std::function<void()> m_wait;
    SongIdentifier m_identifier;
    int m_inVain = 0; ///< songs in a row without a connection
};
