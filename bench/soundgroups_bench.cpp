// Telling which songs sound alike once their fingerprints are there: songs of one length, the worst case, of
// which every tenth is there twice.
#include "collection/soundgroups.h"

#include <benchmark/benchmark.h>

#include <random>

namespace {
constexpr int values = 948;    // of two minutes
constexpr int changedBits = 3; // from a value to the next, as in music
constexpr int seldom = 20;     // so many bits of a copy stay the same for one that does not
constexpr quint64 length = 240000;

using SoundGroups::Fingerprint;

Fingerprint song(std::mt19937& random)
{
    Fingerprint fingerprint;
    quint32 value = random();
    for (int i = 0; i < values; ++i) {
        for (int bit = 0; bit < changedBits; ++bit)
            value ^= 1u << random() % 32;
        fingerprint.append(value);
    }
    return fingerprint;
}

Fingerprint copyOf(Fingerprint fingerprint, std::mt19937& random)
{
    for (quint32& value : fingerprint)
        for (int bit = 0; bit < 32; ++bit)
            if (random() % seldom == 0)
                value ^= 1u << bit;
    return fingerprint;
}

/// The number is that of the songs without their copies.
void songsOfOneLength(benchmark::State& state)
{
    std::mt19937 random(1);
    QVector<Fingerprint> songs;
    const auto count = static_cast<int>(state.range(0));
    for (int i = 0; i < count; ++i)
        songs.append(song(random));
    for (int i = 0; i < count; i += 10)
        songs.append(copyOf(songs.at(i), random));
    QList<quint64> lengths;
    for (int i = 0; i < songs.size(); ++i)
        lengths.append(length);
    for (auto _ : state) {
        const auto groups = SoundGroups::find(lengths, [&](int index) { return songs.at(index); });
        if (groups.size() != count / 10)
            state.SkipWithError("it did not find the copies, or more than them");
    }
    state.SetItemsProcessed(state.iterations() * songs.size());
}
} // namespace

BENCHMARK(songsOfOneLength)->Arg(1000)->Arg(10000)->Arg(40000)->Unit(benchmark::kMillisecond)->UseRealTime();

BENCHMARK_MAIN();
