#pragma once

#include <taglib/tbytevector.h>
#include <taglib/tbytevectorlist.h>

#include <cstdint>

namespace audiocore {
/// Whether AAC holds a second band, which doubles the rate that plays.
enum class Mp4SecondBand {
    No,
    Yes,
    Unsaid ///< its frames alone can tell
};

/// What the configuration of an AAC decoder says.
struct Mp4Aac
{
    std::int64_t rate = 0; ///< hertz, without a second band; zero where it says none
    Mp4SecondBand secondBand = Mp4SecondBand::Unsaid;
};

Mp4Aac readAacConfig(const TagLib::ByteVector& config);
/// Whether frames that lie one behind the other hold a second band. A few are enough to tell, fewer are not:
/// they are not decoded, so a single one may look as if.
bool holdSecondBand(const TagLib::ByteVectorList& frames);
} // namespace audiocore
