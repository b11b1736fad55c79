#include "media/wavfile.h"

using audiocore::WavFile;

int WavFile::id3v2Chunk()
{
    for (unsigned int i = 0; i < chunkCount(); ++i)
        if (chunkName(i) == "ID3 " || chunkName(i) == "id3 ")
            return int(i);
    return -1;
}

long WavFile::end()
{
    const unsigned int last = chunkCount() - 1;
    return chunkCount() == 0 ? 0
                             : long(chunkOffset(last)) + long(chunkDataSize(last)) + long(chunkPadding(last));
}

int WavFile::infoChunk()
{
    for (unsigned int i = 0; i < chunkCount(); ++i)
        if (chunkName(i) == "LIST" && chunkData(i).startsWith("INFO"))
            return int(i);
    return -1;
}
