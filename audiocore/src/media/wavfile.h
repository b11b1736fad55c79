#pragma once

#include <taglib/wavfile.h>

namespace audiocore {
/// A WAV file whose chunks can be handled one by one.
class WavFile : public TagLib::RIFF::WAV::File
{
public:
    using TagLib::RIFF::File::chunkCount;
    using TagLib::RIFF::File::chunkData;
    using TagLib::RIFF::File::chunkDataSize;
    using TagLib::RIFF::File::chunkOffset;
    using TagLib::RIFF::File::chunkPadding;
    using TagLib::RIFF::File::removeChunk;
    using TagLib::RIFF::File::setChunkData;
    using TagLib::RIFF::WAV::File::File;

    /// The numbers of the chunks that hold tags, -1 without one.
    int id3v2Chunk();
    int infoChunk();
    /// Where the chunks end that can be made out. The tag library writes over what lies behind.
    long end();
};
} // namespace audiocore
