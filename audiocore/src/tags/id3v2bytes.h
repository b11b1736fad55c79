#pragma once

#include "tags/tagfields.h"

#include <optional>
#include <vector>

namespace audiocore {
/// An ID3v2 tag of any version, frame by frame. Frames that are not edited keep their bytes.
/// TagLib's writer would not keep them: see tagwriting.h.
class Id3v2Bytes
{
public:
    /// A new tag where there are no bytes; nothing where they cannot be taken apart.
    static std::optional<Id3v2Bytes> parse(const TagLib::ByteVector& tag);
    /// The same from a tag's header and what of its body is there.
    static std::optional<Id3v2Bytes> parse(const TagLib::ByteVector& header, const TagLib::ByteVector& body);

    bool isEmpty() const { return m_frames.empty(); }
    void apply(const TagEdits& edits);
    /// What frames say that the tag library makes nothing of: those marked as UTF-8 that are not, and in the
    /// oldest version a short one at the end, which the library's own second version passes over.
    std::string unreadText(int type) const;
    /// Filled up to the room where that is enough, unless the old tag ended in what is no frame; no bytes
    /// without frames, nothing when there are too many.
    std::optional<TagLib::ByteVector> render(unsigned int room) const;

private:
    struct Frame
    {
        TagLib::ByteVector id;
        TagLib::ByteVector size; ///< as it is written
        TagLib::ByteVector flags;
        TagLib::ByteVector body;
    };

    std::optional<TagLib::ByteVector> plainBody(const Frame& frame) const;
    /// As a frame's head has it.
    TagLib::ByteVector sizeOf(const TagLib::ByteVector& body) const;
    void readFrames(const TagLib::ByteVector& body);
    std::string textOf(const Frame& frame) const;
    Frame frame(const char* id, const TagLib::ByteVector& body) const;
    std::optional<Frame> textFrame(int type, const std::string& text) const;
    std::optional<Frame> pictureFrame(const TagLib::ByteVector& bytes) const;

    int m_version = 4;
    std::vector<Frame> m_frames;
    TagLib::ByteVector m_rest; ///< behind the last frame that can be made out
};
} // namespace audiocore
