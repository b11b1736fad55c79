#pragma once

#include "identify/httpclient.h"
#include "identify/services.h"

#include <string>

/// The MusicBrainz web service: a recording's identifier in, its texts out.
namespace audiocore::musicbrainz {
/// Texts are UTF-8, empty when the service does not know them.
struct Recording
{
    bool understood = false;
    std::string title;
    std::string artist;  ///< the whole credit, joined as the database joins it
    std::string album;   ///< the chosen release's title
    std::string release; ///< the chosen release's identifier
    std::string year;
    std::string track;
    std::string genre; ///< the most voted one, capitalised as a title
};

HttpRequest recordingRequest(const ServiceAddresses& addresses, const std::string& recording);
/// Of several releases the official ones come first, of these the albums before singles and compilations, and
/// of equals the earliest.
Recording readRecording(const std::string& answer);
} // namespace audiocore::musicbrainz
