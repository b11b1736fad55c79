#pragma once

#include "tags/pictures.h"
#include "tags/tagfields.h"

#include <taglib/tlist.h>
#include <taglib/tmap.h>
#include <taglib/tstring.h>
#include <taglib/tstringlist.h>

#include <functional>
#include <optional>

namespace TagLib {
class Tag;
namespace APE {
class Tag;
}
namespace ASF {
class Tag;
}
namespace FLAC {
class Picture;
}
namespace ID3v2 {
class Tag;
}
namespace Ogg {
class XiphComment;
}
} // namespace TagLib

namespace audiocore {
/// Gathers what a file's tags say, tag by tag: a text counts where those before have none, and all their
/// pictures are offered. Null stands for a tag that the file does not have.
class TagReading
{
public:
    /// Of a tag as they stand in the file: asked for where the tag library makes nothing of fields because
    /// they are not in the encoding that they are marked with. Nothing when they are too many.
    using Bytes = std::function<std::optional<TagLib::ByteVector>()>;

    void add(const TagLib::ID3v2::Tag* tag, const Bytes& bytes);
    void add(const TagLib::APE::Tag* tag, const Bytes& bytes);
    void add(TagLib::Ogg::XiphComment* tag, const Bytes& bytes);
    void add(const TagLib::ASF::Tag* tag);
    /// Of a tag that holds no pictures.
    void addTexts(const TagLib::Tag* tag);
    /// `valuesOf` gives a type's values.
    void addTexts(const std::function<TagLib::StringList(int)>& valuesOf);
    void addPictures(const TagLib::List<TagLib::FLAC::Picture*>& pictures);
    PictureChoice& pictures() { return m_pictures; }

    /// The reading is empty afterwards.
    TagContent takeContent();

private:
    /// By their names in capitals.
    void addProperties(const TagLib::Map<TagLib::String, TagLib::StringList>& fields);
    void addUnread(const std::function<std::string(int)>& textOf);
    template <class Contains>
    bool hasUnread(const Contains& contains) const;
    bool isComplete() const;

    TagContent m_content;
    PictureChoice m_pictures;
};
} // namespace audiocore
