#include "tags/pictures.h"

#include <taglib/flacpicture.h>
#include <taglib/id3v2header.h>
#include <taglib/id3v2tag.h>

using audiocore::PictureChoice;
using TagLib::ByteVector;

void PictureChoice::offer(const ByteVector& bytes, bool front)
{
    if (bytes.isEmpty())
        return;
    ++m_count;
    if (bytes.size() > largestPicture)
        return;
    if (m_chosen.isEmpty() || (front && !m_front))
        m_chosen = bytes;
    m_front = m_front || front;
}

unsigned int audiocore::largestPictureIn(const TagLib::ID3v2::Tag* tag)
{
    return tag && tag->header()->majorVersion() == 2 ? largestPictureInBlock : largestPicture;
}

std::string audiocore::pictureType(const ByteVector& bytes)
{
    if (bytes.startsWith("\x89PNG"))
        return "image/png";
    if (bytes.startsWith("GIF8"))
        return "image/gif";
    if (bytes.startsWith("BM"))
        return "image/bmp";
    return bytes.mid(8, 4) == ByteVector("WEBP") ? "image/webp" : "image/jpeg";
}

ByteVector audiocore::flacPicture(const ByteVector& bytes)
{
    TagLib::FLAC::Picture picture;
    picture.setType(TagLib::FLAC::Picture::FrontCover);
    picture.setMimeType(pictureType(bytes));
    picture.setData(bytes);
    return picture.render();
}
