#include "wavfixture.h"

#include "mediabytes.h"

using namespace MediaBytes;
using WavFixture::Wav;

namespace {
constexpr quint32 unknown = 0xFFFFFFFF;
const char* const unsizedSound = "does not tell how much sound";
const char* const artist = "Artist";

QByteArray tags()
{
    return WavFixture::artistChunk("Artist in the list") +
           chunk("id3 ", id3v2(frame("TPE1", QByteArray(1, '\0') + artist)));
}

QByteArray filledIn(QByteArray wav)
{
    return wav.replace(4, 4, little(quint32(wav.size() - 8)));
}

/// The sound and what is before it are from others.
QList<Wav> withoutSizes(const QByteArray& tone)
{
    using namespace WavFixture;
    const quint32 file = quint32(tone.size() - 8);
    const quint32 sound = quint32(tone.size() - tone.indexOf("data") - 8);
    const QByteArray tagged = with(tone, tags());
    QList<Wav> all;
    for (const quint32 size : {0u, unknown}) {
        const QByteArray name = size == 0 ? "zero" : "all ones";
        all << Wav{"sizes of " + name, sized(tone, size, size), 1000, "", unsizedSound};
        all << Wav{"sizes of " + name + ", tags before", sized(tagged, size, size), 1000, artist,
                   unsizedSound};
        // Nobody can tell them from sound.
        all << Wav{"sizes of " + name + ", tags behind", sized(tone + tags(), size, size), 1000, "",
                   unsizedSound};
        all << Wav{"a sound of size " + name, sized(tone, file, size), 1000, "", unsizedSound};
        all << Wav{"a file of size " + name, sized(tone + tags(), size, sound), 1000, artist, nullptr};
    }
    all << Wav{"the sound cut short", tagged.left(tagged.size() - int(sound) / 2), 500, artist, unsizedSound};
    all << Wav{"a sound said to be longer", sized(tone, file, sound + 2), 1000, "", unsizedSound};
    all << Wav{"a file said to be shorter", sized(tone + tags(), file, sound), 1000, artist, nullptr};
    return all;
}

QList<Wav> withoutSound(const QByteArray& tone)
{
    const QByteArray head = tone.left(tone.indexOf("data"));
    const QByteArray none = chunk("data", QByteArray());
    return {{"no sound yet", filledIn(head + none), 0, "", unsizedSound},
            {"no sound yet, no sizes", head + none, 0, "", unsizedSound},
            {"no sound yet, tags before", filledIn(head + tags() + none), 0, artist, unsizedSound},
            {"no sound yet, tags behind", filledIn(head + none + tags()), 0, artist, unsizedSound}};
}

QList<Wav> withChunk(const QByteArray& tone, const QByteArray& name, const QByteArray& odd)
{
    return {{name + " before the sound", WavFixture::with(tone, odd + tags()), 1000, artist, nullptr},
            {name + " behind the sound", filledIn(tone + odd + tags()), 1000, artist, nullptr}};
}
} // namespace

QByteArray WavFixture::sized(QByteArray wav, quint32 file, quint32 sound)
{
    return wav.replace(4, 4, little(file)).replace(wav.indexOf("data") + 4, 4, little(sound));
}

QByteArray WavFixture::with(QByteArray wav, const QByteArray& chunksBeforeSound)
{
    return filledIn(wav.insert(wav.indexOf("data"), chunksBeforeSound));
}

QByteArray WavFixture::artistChunk(const QByteArray& artistText)
{
    return chunk("LIST", "INFO" + chunk("IART", artistText + '\0'));
}

QList<Wav> WavFixture::odd(const QByteArray& tone)
{
    QList<Wav> all = withoutSizes(tone) + withoutSound(tone);
    all += withChunk(tone, "an empty chunk", chunk("abcd", QByteArray()));
    all += withChunk(tone, "an empty list", chunk("LIST", QByteArray()));
    all += withChunk(tone, "a list of unknown kind", chunk("LIST", "abcdefgh"));
    all += withChunk(tone, "a list that is too short for its kind", chunk("LIST", "abc"));
    all += withChunk(tone, "an empty list of the music", chunk("LIST", "INFO"));
    all += withChunk(tone, "labels", chunk("LIST", "adtl" + chunk("labl", little(quint32(1)) + "cue")));
    // Somebody forgot the byte behind a chunk of odd size.
    const QByteArray unfilled = with(tone, "abcd" + little(quint32(3)) + "abc");
    all << Wav{"no byte that fills up", unfilled, 1000, "", nullptr};
    all << Wav{"no byte that fills up, and tags", filledIn(unfilled + tags()), 1000, artist, nullptr};
    all << Wav{"no byte that fills up the last one", filledIn(tone + "abcd" + little(quint32(3)) + "abc"),
               1000, "", nullptr};
    all << Wav{"bytes behind the last chunk", tone + QByteArray(1000, '\1'), 1000, "", "goes on behind"};
    all << Wav{"a last chunk cut short", tone + tags() + "abcd" + little(quint32(99)) + "abc", 1000, artist,
               "goes on behind"};
    const QByteArray front = id3v2(frame("TPE1", QByteArray(1, '\0') + artist));
    all << Wav{"a tag before it", front + tone, 1000, artist, "a tag stands before"};
    return all;
}

QList<Wav> WavFixture::ofLongSizes(const QByteArray& rf64Tone)
{
    const char* const reason = "for more than 4 GB";
    const QByteArray tagged = rf64Tone + tags();
    return {{"RF64", tagged, 1000, artist, reason},
            {"BW64", QByteArray(tagged).replace(0, 4, "BW64"), 1000, artist, reason},
            {"RF64 without its sizes", QByteArray(rf64Tone).replace("ds64", "JUNK"), 1000, "", reason}};
}
