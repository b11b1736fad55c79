#pragma once

#include "media/checkedstream.h"

#include <taglib/tfile.h>

namespace audiocore {
/// A file as the tag library's reader of ID3v2 and our own writers ask for it: its bytes, and nothing that
/// the library makes of them. The stream must outlive it.
class TagSource final : public TagLib::File
{
public:
    explicit TagSource(CheckedStream& stream) : File(&stream) {}

    TagLib::Tag* tag() const override { return nullptr; }
    TagLib::AudioProperties* audioProperties() const override { return nullptr; }
    bool save() override { return false; }
};
} // namespace audiocore
