#include "mp4kinds.h"

#include "mp4fixture.h"

#include <QtEndian>

using namespace Mp4;
using Mp4Kinds::Kind;

namespace {
const char* const titleName = "\251nam";
const char* const artistName = "\251ART";

QByteArray title()
{
    return item(titleName, 1, "Old");
}

QByteArray artist()
{
    return item(artistName, 1, "Singer");
}

QByteArray handler(const QByteArray& kind = "mdirappl")
{
    return atom("hdlr", QByteArray(8, '\0') + kind + QByteArray(17 - kind.size(), '\0'));
}

/// A "meta" with its version, and what is around it.
QByteArray meta(const QByteArray& content)
{
    return atom("meta", number(0) + content);
}

QByteArray inUdta(const QByteArray& content)
{
    return atom("udta", content);
}

/// A plain text as it stands in its atom; English in the encoding of old without a language.
QByteArray sized(const QByteArray& value, quint16 language)
{
    return number(quint32(value.size()) << 16 | language) + value;
}

QByteArray text(const QByteArray& name, const QByteArray& value, quint16 language = 0)
{
    return atom(name, sized(value, language));
}

QByteArray texts()
{
    return text(titleName, "Old", 0x55C4) + text(artistName, "Singer");
}

QByteArray keyed()
{
    const auto key = [](const QByteArray& name) { return atom("mdta", name); };
    const QByteArray keys = key("com.apple.quicktime.title") + key("artist") + key("mood");
    const auto value = [](quint32 number, const QByteArray& text) {
        return item(Mp4::number(number), 1, text);
    };
    return handler("mdta") + atom("keys", number(0) + number(3) + keys) +
           atom("ilst", value(0, "No key") + value(1, "Old") + value(2, "Singer") + value(3, "Calm"));
}

void addRoom(QList<Kind>& kinds, const QByteArray& song)
{
    for (const int size : {1, 4, 8, 100})
        kinds << Kind{QStringLiteral("room of %1 behind the items").arg(size),
                      Mp4Kinds::withInMoov(song, Mp4Kinds::listInMoov(QByteArray(size, '\0')))};
    kinds << Kind{"room among the items",
                  Mp4Kinds::withInMoov(song, tags(title() + atom("free", QByteArray(50, '\0')) + artist()))};
    kinds << Kind{"a zero behind the list",
                  Mp4Kinds::withInMoov(song, inUdta(meta(handler() + Mp4Kinds::list()) + number(0))), true,
                  false};
}

void addFreeItems(QList<Kind>& kinds, const QByteArray& song)
{
    const QByteArray mean = atom("mean", number(0) + "com.own");
    const QByteArray name = atom("name", number(0) + "MOOD");
    const QByteArray value = atom("data", number(1) + number(0) + "Calm");
    const auto add = [&kinds, &song](const char* kind, const QByteArray& content, bool later = true) {
        kinds << Kind{QStringLiteral("a free item ") + kind,
                      Mp4Kinds::withInMoov(song, tags(atom("----", content) + title() + artist())), true,
                      later};
    };
    add("of nothing", QByteArray());
    add("of half a name", mean);
    add("of a name", mean + name);
    add("without a name", mean + value);
    add("without whose it is", name + value);
    add("with two values", mean + name + value + value);
    add("with something else", mean + name + atom("abcd", "xyz"));
    add("with a short value", mean + name + number(12) + "data" + number(1));
    add("with a value that is too long", mean + name + number(500) + "data" + number(1) + number(0) + "Calm");
    add("of rubbish", "abc", false);
}

void addHeads(QList<Kind>& kinds, const QByteArray& song)
{
    const auto add = [&kinds, &song](const char* name, const QByteArray& content, bool read) {
        kinds << Kind{name, Mp4Kinds::withInMoov(song, inUdta(atom("meta", content))), read};
    };
    const QByteArray list = Mp4Kinds::list();
    const QByteArray room = atom("free", QByteArray(16, '\0'));
    add("no version", handler() + list, true);
    add("no version, room in front", room + handler() + list, true);
    add("neither version nor handler", list, false);
    add("no handler", number(0) + list, false);
    add("the handler behind the list", number(0) + list + handler(), false);
}

void addPlaces(QList<Kind>& kinds, const QByteArray& song)
{
    const auto add = [&kinds, &song](const char* name, const QByteArray& atoms) {
        kinds << Kind{name, Mp4Kinds::withInMoov(song, atoms)};
    };
    const QByteArray named = handler() + Mp4Kinds::list();
    add("beside a track", meta(named));
    add("in the second place", inUdta(atom("name", "x")) + inUdta(meta(named)));
    add("behind an empty list", inUdta(meta(handler() + atom("ilst", QByteArray()) + Mp4Kinds::list())));
    add("by keys", inUdta(meta(keyed())));
    add("by keys beside a track", meta(keyed()));
    add("by keys beside a track, and a list", meta(keyed()) + tags(title() + artist()));
    add("texts", inUdta(texts()));
    add("texts of the old encoding", inUdta(text(titleName, "Old") + text(artistName, "Singer") +
                                            text("\251alb", "\x9F"
                                                            "ber")));
    add("texts in front of a list", inUdta(texts() + meta(named)));
    add("texts behind a list", inUdta(meta(named) + texts()));
    add("two texts in an atom",
        inUdta(atom(titleName, sized("Old", 0) + sized("Alt", 1)) + text(artistName, "Singer")));
    add("a text alone", inUdta(atom(titleName, "Old") + text(artistName, "Singer")));
    kinds << Kind{"beside all of the song", song + meta(named)};
    kinds << Kind{"behind one of another kind",
                  Mp4Kinds::withInMoov(song, inUdta(meta(handler("ID32")) + meta(named))), true, false};
}
} // namespace

QByteArray Mp4Kinds::untagged(const QByteArray& song)
{
    const int tags = song.lastIndexOf("udta") - 4;
    const int place = song.lastIndexOf("moov", tags) - 4;
    return song.left(place) + number(quint32(tags - place)) + song.mid(place + 4, tags - place - 4);
}

QByteArray Mp4Kinds::withInMoov(QByteArray song, const QByteArray& atoms)
{
    const int place = song.lastIndexOf("moov") - 4;
    const quint32 size = qFromBigEndian<quint32>(song.constData() + place);
    if (place + int(size) != song.size())
        qFatal("the song does not end with its moov");
    return song.replace(place, 4, number(size + quint32(atoms.size()))) + atoms;
}

QByteArray Mp4Kinds::list(const QByteArray& behind)
{
    return atom("ilst", title() + artist() + behind);
}

QByteArray Mp4Kinds::listInMoov(const QByteArray& behind)
{
    return tags(title() + artist() + behind);
}

QList<Kind> Mp4Kinds::oddTags(const QByteArray& song)
{
    QList<Kind> kinds;
    addRoom(kinds, song);
    addFreeItems(kinds, song);
    addHeads(kinds, song);
    addPlaces(kinds, song);
    return kinds;
}
