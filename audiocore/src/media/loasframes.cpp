#include "media/loasframes.h"

#include <taglib/tbytevector.h>
#include <taglib/tiostream.h>

bool audiocore::findsLoas(TagLib::IOStream& stream, long begin, long)
{
    constexpr unsigned int headSize = 3;
    constexpr int inARow = 3;
    for (int frame = 0; frame < inARow; ++frame) {
        stream.seek(begin);
        const TagLib::ByteVector head = stream.readBlock(headSize);
        const unsigned int bits = head.size() == headSize ? head.toUInt(0u, headSize, true) : 0;
        if (bits >> 13 != 0x2B7)
            return false;
        begin += long(headSize + (bits & 0x1FFF));
    }
    return true;
}
