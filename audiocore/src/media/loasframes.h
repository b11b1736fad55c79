#pragma once

namespace TagLib {
class IOStream;
}

namespace audiocore {
/// Whether three frames of LOAS, the other wrapping of raw AAC, follow one another at `begin`.
bool findsLoas(TagLib::IOStream& stream, long begin, long searchLength);
} // namespace audiocore
