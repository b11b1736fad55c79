#pragma once

#include <set>
#include <string>

namespace audiocore {
/// What makes a recording of a song another one.
enum class Version { Live, Remix, Acoustic, Demo, Karaoke, Instrumental, Cover, Session };

/// A title, or an album's, taken apart for comparing.
struct SongTitle
{
    std::u32string plain; ///< folded, without what is no part of it; Roman numbers from 2 on as digits
    std::set<Version> versions;
};

/// Guests ("feat. ...") and additions in brackets or behind a dash that make no other recording of it
/// ("2011 Remaster", "Explicit") are left out, and so is "live" with what follows it there.
SongTitle songTitle(const std::string& title);
/// All versions that the words of a text name.
std::set<Version> versionsNamed(const std::string& text);
} // namespace audiocore
