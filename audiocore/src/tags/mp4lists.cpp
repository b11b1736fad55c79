#include "tags/mp4lists.h"

#include "audiocore/tagitem.h"
#include "tags/tagtext.h"

#include <taglib/tfile.h>

#include <algorithm>
#include <iterator>

using audiocore::Mp4Atom;
using audiocore::Mp4Atoms;
using audiocore::Mp4Item;
using audiocore::Mp4List;
using TagLib::ByteVector;

namespace {
constexpr int noType = -1;

struct Name
{
    int type;
    const char* name;
};

/// The first of each type is the one that is written.
const Name itemNames[] = {{TAG_TITLE, "\251nam"}, {TAG_ARTIST, "\251ART"}, {TAG_ALBUM, "\251alb"},
                          {TAG_GENRE, "\251gen"}, {TAG_GENRE, "gnre"},     {TAG_YEAR, "\251day"},
                          {TAG_TRACK, "trkn"},    {TAG_PICTURE, "covr"}};
const Name textNames[] = {{TAG_TITLE, "\251nam"}, {TAG_ARTIST, "\251ART"}, {TAG_ALBUM, "\251alb"},
                          {TAG_GENRE, "\251gen"}, {TAG_YEAR, "\251day"},   {TAG_TRACK, "\251trk"}};
const Name keyNames[] = {{TAG_TITLE, "title"}, {TAG_ARTIST, "artist"},  {TAG_ALBUM, "album"},
                         {TAG_GENRE, "genre"}, {TAG_YEAR, "year"},      {TAG_YEAR, "date"},
                         {TAG_TRACK, "track"}, {TAG_PICTURE, "artwork"}};

template <class Names, class Says>
int typeIn(const Names& names, const Says& says)
{
    const auto* const name = std::find_if(std::begin(names), std::end(names), says);
    return name == std::end(names) ? noType : name->type;
}

template <class Names>
int typeOf(const Names& names, const std::string& name)
{
    return typeIn(names, [&name](const Name& one) { return name == one.name; });
}

/// Some keys stand behind the name of whoever defined them.
int typeOfKey(std::string key)
{
    const std::string definer = "com.apple.quicktime.";
    if (key.compare(0, definer.size(), definer) == 0)
        key.erase(0, definer.size());
    return typeIn(keyNames, [&key](const Name& one) { return audiocore::sameName(key, one.name); });
}

/// What the keys of a "meta" stand for, in their order.
std::vector<int> typesOfKeys(TagLib::File& file, const Mp4Atom& keys)
{
    constexpr std::int64_t most = 64 * 1024;
    constexpr unsigned int listHead = 8;
    constexpr unsigned int keyHead = 8;
    file.seek(keys.content());
    const ByteVector bytes = file.readBlock(size_t(std::min(most, keys.end() - keys.content())));
    std::vector<int> types;
    for (unsigned int at = listHead; at + keyHead <= bytes.size();) {
        const unsigned int size = bytes.toUInt(at);
        if (size < keyHead || size > bytes.size() - at)
            break;
        types.push_back(typeOfKey(std::string(bytes.data() + at + keyHead, size - keyHead)));
        at += size;
    }
    return types;
}

/// What the handler of a "meta" says that it holds, four bytes; empty without one.
std::string handlerOf(TagLib::File& file, const Mp4Atoms& atoms, const Mp4Atom& meta)
{
    const Mp4Atom* handler = atoms.findIn(meta, {"hdlr"});
    if (!handler)
        return std::string();
    file.seek(handler->content() + 8);
    const ByteVector kind = file.readBlock(4);
    return {kind.data(), kind.size()};
}

Mp4List namedList(const Mp4Atoms& atoms, const Mp4Atom& list)
{
    Mp4List named{Mp4List::Kind::Named, false, list, {}};
    for (const Mp4Atom* item : atoms.childrenOf(list))
        named.items.push_back({*item, typeOf(itemNames, item->name)});
    return named;
}

Mp4List keyedList(const Mp4Atoms& atoms, const Mp4Atom& list, const std::vector<int>& types)
{
    Mp4List keyed{Mp4List::Kind::Keyed, false, list, {}};
    for (const Mp4Atom* item : atoms.childrenOf(list)) {
        const unsigned int number = ByteVector(item->name.data(), 4).toUInt(0u);
        keyed.items.push_back({*item, number > 0 && number <= types.size() ? types[number - 1] : noType});
    }
    return keyed;
}

void addLists(std::vector<Mp4List>& lists, TagLib::File& file, const Mp4Atoms& atoms, const Mp4Atom& meta)
{
    const bool keyed = handlerOf(file, atoms, meta) == "mdta";
    const Mp4Atom* keys = keyed ? atoms.findIn(meta, {"keys"}) : nullptr;
    const std::vector<int> types = keys ? typesOfKeys(file, *keys) : std::vector<int>();
    for (const Mp4Atom* list : atoms.childrenOf(meta))
        if (list->name == "ilst")
            lists.push_back(keyed ? keyedList(atoms, *list, types) : namedList(atoms, *list));
}

void addTexts(std::vector<Mp4List>& lists, const Mp4Atoms& atoms, const Mp4Atom& around)
{
    Mp4List texts{Mp4List::Kind::Texts, false, around, {}};
    for (const Mp4Atom* text : atoms.childrenOf(around))
        if (const int type = typeOf(textNames, text->name); type != noType)
            texts.items.push_back({*text, type});
    if (!texts.items.empty())
        lists.push_back(texts);
}

/// The own list is in the first place where everybody looks.
void putOwnFirst(std::vector<Mp4List>& lists, const Mp4Atoms& atoms)
{
    const Mp4Atom* place = atoms.find({"moov", "udta"});
    const auto own = std::find_if(lists.begin(), lists.end(), [place](const Mp4List& list) {
        return place && list.kind == Mp4List::Kind::Named && list.atom.begin >= place->begin &&
               list.atom.end() <= place->end();
    });
    if (own == lists.end())
        return;
    own->own = true;
    std::rotate(lists.begin(), own, own + 1);
}
} // namespace

std::vector<Mp4List> audiocore::mp4Lists(TagLib::File& file, const Mp4Atoms& atoms)
{
    const std::vector<std::string> places[] = {{"moov", "udta", "meta"}, {"moov", "meta"}, {"meta"}};
    std::vector<Mp4List> lists;
    for (const auto& place : places)
        for (const Mp4Atom* meta : atoms.findAll(place))
            addLists(lists, file, atoms, *meta);
    for (const Mp4Atom* around : atoms.findAll({"moov", "udta"}))
        addTexts(lists, atoms, *around);
    putOwnFirst(lists, atoms);
    return lists;
}

bool audiocore::isForNamedItems(TagLib::File& file, const Mp4Atoms& atoms, const Mp4Atom& meta)
{
    const std::string handler = handlerOf(file, atoms, meta);
    return handler.empty() || handler == "mdir";
}

const char* audiocore::mp4Name(int type)
{
    const auto* const name = std::find_if(std::begin(itemNames), std::end(itemNames),
                                          [type](const Name& one) { return one.type == type; });
    return name == std::end(itemNames) ? "" : name->name;
}
