#include "collection/bestcopy.h"

#include <algorithm>
#include <iterator>
#include <tuple>

namespace {
/// AAC's limit is 6 for each of two channels; others stay far below.
constexpr quint64 mostLossyBitsOfASample = 12;

/// How a kind is told by its name, and what 100 kbit/s of it are worth in MP3.
struct Codec
{
    const char* name;
    bool lossless;
    quint64 worth;
};

constexpr Codec codecs[] = {{"FLAC", true, 0},   {"APE", true, 0},       {"WAV", true, 0},
                            {"AIFF", true, 0},   {"Lossless", true, 0},  {"AAC", false, 130},
                            {"M4A", false, 130}, {"MPEG-4", false, 130}, {"OGG", false, 130},
                            {"WMA", false, 110}};
constexpr Codec anyOther = {"", false, 100};

const Codec& codecOf(const QString& kind)
{
    const auto* const found = std::find_if(std::begin(codecs), std::end(codecs), [&kind](const Codec& codec) {
        return kind.contains(QLatin1String(codec.name), Qt::CaseInsensitive);
    });
    return found == std::end(codecs) ? anyOther : *found;
}

/// The greater one sounds better: lossless, worth of the bit rate, samples, seconds.
using Rank = std::tuple<bool, quint64, quint64, quint64>;

Rank rankOf(const BestCopy::Sound& copy)
{
    const Codec& codec = codecOf(copy.kind);
    const bool tooDenseForLossy =
        copy.sampleRate > 0 && copy.bitRate * 1000 > copy.sampleRate * mostLossyBitsOfASample;
    const bool lossless = codec.lossless || tooDenseForLossy;
    return Rank(lossless, lossless ? 0 : copy.bitRate * codec.worth, copy.sampleRate, copy.duration / 1000);
}
} // namespace

QVector<int> BestCopy::findAll(const QVector<Sound>& copies)
{
    QVector<Rank> ranks;
    ranks.reserve(copies.size());
    std::transform(copies.begin(), copies.end(), std::back_inserter(ranks), rankOf);
    const auto best = std::max_element(ranks.begin(), ranks.end());
    QVector<int> found;
    for (int position = 0; position < ranks.size(); ++position)
        if (ranks.at(position) == *best)
            found.append(position);
    return found;
}

int BestCopy::find(const QVector<Sound>& copies)
{
    const QVector<int> best = findAll(copies);
    return best.size() == copies.size() ? -1 : best.first();
}
