#include "audiocore/iaudiotag.h"
#include "audiocore/saveproblem.h"

#include "base/log.h"
#include "base/registry.h"
#include "base/text.h"
#include "tags/parsedmedia.h"
#include "tags/safesave.h"

namespace {
using audiocore::ParsedMedia;

struct TagState
{
    std::string path; ///< empty while no file is open
    std::weak_ptr<const ParsedMedia> reading;
    std::unique_ptr<audiocore::TagEdits> edits;
    SaveProblem problem = SAVE_NO_PROBLEM; ///< of the last save

    std::shared_ptr<const ParsedMedia> parsed()
    {
        std::shared_ptr<const ParsedMedia> media = reading.lock();
        if (!media) {
            media = audiocore::parsedMedia(path);
            reading = media;
        }
        return media;
    }
    audiocore::TagEdits& editing()
    {
        if (!edits)
            edits = std::make_unique<audiocore::TagEdits>();
        return *edits;
    }
};

bool isText(std::int32_t type)
{
    return type >= TAG_TITLE && type <= TAG_TRACK;
}

/// Keeps the last item's bytes alive for the caller; one reading per thread, however many objects are open.
std::shared_ptr<const ParsedMedia> lend(std::shared_ptr<const ParsedMedia> media)
{
    thread_local std::shared_ptr<const ParsedMedia> lent;
    lent = std::move(media);
    return lent;
}

class Tag final : public IAudioTag
{
public:
    std::int32_t Open(const char32_t* path) override
    {
        const auto own = state();
        *own = TagState();
        const std::optional<std::string> name = base::nameFromUtf32(path ? path : U"");
        if (!name || name->empty()) {
            base::logLine("a file", name ? "no path was given" : "has a name that is not valid text");
            return 1;
        }
        own->path = *name;
        return own->parsed()->format == AUDIO_FORMAT_UNKNOWN ? 1 : 0;
    }
    void Reserved1() override {}
    std::int32_t Close() override
    {
        *state() = TagState();
        return 0;
    }
    void Reserved3() override {}
    std::int32_t Save() override
    {
        const auto own = state();
        own->problem = own->path.empty() ? SAVE_OTHER_PROBLEM : SAVE_NO_PROBLEM;
        if (own->path.empty())
            return 1;
        if (!own->edits)
            return 0;
        own->problem = audiocore::saveEdits(own->path, *own->edits);
        own->reading.reset();
        if (own->problem != SAVE_NO_PROBLEM)
            return 1;
        own->edits.reset();
        return 0;
    }
    std::int32_t GetItemCount() override
    {
        const auto own = state();
        return own->path.empty() ? 0 : std::int32_t(own->parsed()->items.size());
    }
    TagItem GetItem(std::int32_t index) override
    {
        const auto own = state();
        const TagItem none{-1, -1, 0, 0, nullptr};
        if (own->path.empty() || index < 0)
            return none;
        const std::shared_ptr<const ParsedMedia> media = lend(own->parsed());
        if (size_t(index) >= media->items.size())
            return none;
        const ParsedMedia::Item& item = media->items[size_t(index)];
        if (item.type == TAG_PICTURE)
            return {index, item.type, 1, std::int32_t(item.picture.size()),
                    const_cast<char*>(item.picture.data())};
        return {index, item.type, 0, std::int32_t(item.text.size() * sizeof(char32_t)),
                const_cast<char32_t*>(item.text.c_str())};
    }
    void Reserved7() override {}
    void Reserved8() override {}
    std::int32_t SetItem(TagItem item) override
    {
        const auto own = state();
        const bool empty = item.size <= 0 || !item.data;
        if (item.dataKind != 0) {
            own->editing().picture =
                empty ? TagLib::ByteVector()
                      : TagLib::ByteVector(static_cast<const char*>(item.data), unsigned(item.size));
            return 0;
        }
        if (!isText(item.type))
            return 1;
        const std::u32string text = empty ? std::u32string()
                                          : std::u32string(static_cast<const char32_t*>(item.data),
                                                           size_t(item.size) / sizeof(char32_t));
        const std::optional<std::string> utf8 = base::toUtf8(text);
        if (!utf8)
            return 1;
        own->editing().texts[size_t(item.type)] = *utf8;
        return 0;
    }
    void Reserved10() override {}
    void Reserved11() override {}
    std::int32_t RemoveItem(std::int32_t type) override
    {
        const auto own = state();
        if (type == TAG_PICTURE)
            own->editing().picture = TagLib::ByteVector();
        else if (isText(type))
            own->editing().texts[size_t(type)] = std::string();
        else
            return 1;
        return 0;
    }

private:
    std::shared_ptr<TagState> state() const { return base::Registry<TagState>::instance().of(this); }
};
} // namespace

SaveProblem SaveProblemOf(const IAudioTag* tag)
{
    return base::Registry<TagState>::instance().of(tag)->problem;
}

std::uint32_t LargestPictureFor(const IAudioTag* tag)
{
    const auto state = base::Registry<TagState>::instance().of(tag);
    return state->path.empty() ? 0 : state->parsed()->largestPicture;
}

std::uint32_t PicturesIn(const IAudioTag* tag)
{
    const auto state = base::Registry<TagState>::instance().of(tag);
    return state->path.empty() ? 0 : std::uint32_t(state->parsed()->content.pictures);
}

IAudioTag* CreateTag()
{
    return base::Registry<TagState>::instance().make<Tag>();
}
