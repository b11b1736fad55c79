#pragma once

#include "tagfields.h"

#include <functional>
#include <optional>
#include <vector>

namespace audiocore {
/// An ID3v2 tag of any version, frame by frame. Frames that are not edited keep their bytes.
class Id3v2Bytes
{
public:
    /// A new tag where there are no bytes; nothing where they cannot be taken apart.
    static std::optional<Id3v2Bytes> parse(const TagLib::ByteVector& tag);
    /// The same from a tag's header and what of its body is there.
    static std::optional<Id3v2Bytes> parse(const TagLib::ByteVector& header, const TagLib::ByteVector& body);
    /// Bytes of a tag's body by position and size.
    using BodyReader = std::function<TagLib::ByteVector(unsigned int, unsigned int)>;
    /// Only the frames that say our items, `most` bytes of them at the most; none of a body that has zeros
    /// put in between. Not to be written.
    static std::optional<Id3v2Bytes> skim(const TagLib::ByteVector& header, unsigned int bodySize, long most,
                                          const BodyReader& body);
    /// The size of the tag that starts with this header, footer included; 0 when it is none.
    static unsigned int sizeByHeader(const TagLib::ByteVector& header);

    /// The size of the footer that the header tells of.
    static unsigned int footerOf(const TagLib::ByteVector& header);

    bool isEmpty() const { return m_frames.empty(); }
    void apply(const TagEdits& edits);
    /// What frames say that the tag library makes nothing of: those marked as UTF-8 that are not, and in the
    /// oldest version a short one at the end, which the library's own second version passes over.
    std::string unreadText(int type) const;
    /// The frames that say our items, plain and in bounds, as the body of a tag of the same version without
    /// any flags.
    TagLib::ByteVector shown() const;
    /// Filled up to the room where that is enough; no bytes without frames, nothing when there are too many.
    std::optional<TagLib::ByteVector> render(unsigned int room) const;

private:
    struct Frame
    {
        TagLib::ByteVector id;
        TagLib::ByteVector flags;
        TagLib::ByteVector body;
    };

    unsigned int idSize() const { return m_version == 2 ? 3 : 4; }
    unsigned int frameHeaderSize() const { return m_version == 2 ? 6 : 10; }
    unsigned int frameSize(const TagLib::ByteVector& head, unsigned int next, unsigned int bodySize,
                           const BodyReader& body) const;
    std::optional<TagLib::ByteVector> plainBody(const Frame& frame) const;
    bool hasPlainTexts(const TagLib::ByteVector& picture) const;
    void append(TagLib::ByteVector& tag, const Frame& frame) const;
    unsigned int readFrames(unsigned int bodySize, const BodyReader& body,
                            const std::function<bool(const TagLib::ByteVector&, unsigned int)>& isWanted);
    std::string textOf(const Frame& frame) const;
    Frame frame(const char* id, const TagLib::ByteVector& body) const;
    std::optional<Frame> textFrame(int type, const std::string& text) const;
    std::optional<Frame> pictureFrame(const TagLib::ByteVector& bytes) const;

    int m_version = 4;
    std::vector<Frame> m_frames;
    TagLib::ByteVector m_rest; ///< behind the last frame that can be made out
};
} // namespace audiocore
