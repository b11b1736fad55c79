#pragma once

#include "media/mp4atoms.h"
#include "media/mpegframes.h"
#include "tags/mp4lists.h"

#include <taglib/tfile.h>
#include <taglib/tstringlist.h>

#include <vector>

namespace audiocore {
/// A value of an item, as a place in the file.
struct Mp4Value
{
    /// Numbers are marked as anything.
    enum Mark : unsigned int { Anything = 0, Utf8 = 1, Utf16 = 2, Gif = 12, Jpeg = 13, Png = 14, Bmp = 27 };

    unsigned int type = 0; ///< what it is marked as, which may be no Mark
    std::int64_t begin = 0;
    std::int64_t size = 0;
};

/// An MP4 file, read by our own bounded walk: the tag library's own reader goes as deep as a file says. Valid
/// when it holds sound that has a rate. Nothing is kept in memory but where things are.
class Mp4File : public TagLib::File
{
public:
    /// The stream must outlive the file.
    explicit Mp4File(TagLib::IOStream& stream);

    TagLib::Tag* tag() const override { return nullptr; }
    TagLib::AudioProperties* audioProperties() const override { return nullptr; }
    bool save() override { return false; }

    /// Whether its atoms are neither too many nor too deep; what is not so is not valid.
    bool isBounded() const { return m_bounded; }
    const MpegStream& sound() const { return m_sound; }
    /// The values of a text type in the first list that has it; a track as "number/total". Too long ones are
    /// left out.
    TagLib::StringList texts(int type);
    std::vector<Mp4Value> pictures();
    TagLib::ByteVector bytesOf(const Mp4Value& value);
    /// The values of an item; what else is in it is passed over.
    std::vector<Mp4Value> valuesOf(const Mp4Atom& item);

private:
    TagLib::StringList textsOf(const Mp4Item& item, Mp4List::Kind kind);
    TagLib::StringList textsOf(const Mp4Item& item, bool named);
    TagLib::StringList plainTextOf(const Mp4Atom& atom);

    std::vector<Mp4List> m_lists;
    MpegStream m_sound;
    bool m_bounded = false;
};
} // namespace audiocore
