#pragma once

#include <taglib/tbytevector.h>

#include <string>

namespace TagLib::ID3v2 {
class Tag;
}

namespace audiocore {
/// Bytes: what our own player gets past, whatever the format wraps it in.
constexpr unsigned int largestPicture = 32u * 1024 * 1024;
/// Of what holds less than 16 MB.
constexpr unsigned int largestPictureInBlock = (16u * 1024 - 64) * 1024;
/// What goes into the tag, or into a new one.
unsigned int largestPictureIn(const TagLib::ID3v2::Tag* tag);

/// Picks the front cover from a file's pictures, else the first one.
class PictureChoice
{
public:
    void offer(const TagLib::ByteVector& bytes, bool front);
    /// One that is there and is not to be chosen.
    void passOver() { ++m_count; }
    /// None where none was chosen.
    const TagLib::ByteVector& bytes() const { return m_chosen; }
    /// Of whatever kind and size.
    int count() const { return m_count; }

private:
    int m_count = 0;
    TagLib::ByteVector m_chosen;
    bool m_front = false;
};

/// "image/png" and the like, by the first bytes.
std::string pictureType(const TagLib::ByteVector& bytes);
/// The front cover as FLAC wraps it.
TagLib::ByteVector flacPicture(const TagLib::ByteVector& bytes);
} // namespace audiocore
