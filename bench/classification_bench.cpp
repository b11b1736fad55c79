// Grouping the duplicates of a collection: one song in five has a twin, durations are in whole seconds.
#include "collection/classification.h"

#include <benchmark/benchmark.h>

#include <random>

namespace {
struct Songs
{
    QStringList titles;
    QList<quint64> durations;
};

Songs makeSongs(int count)
{
    std::mt19937 random(7);
    Songs songs;
    songs.titles.reserve(count);
    songs.durations.reserve(count);
    for (int i = 0; i < count; ++i) {
        const auto number = random() % unsigned(count * 2 + 1);
        songs.titles.append(QStringLiteral("A song of some length, number %1").arg(number));
        songs.durations.append(1000ull * (60 + random() % 400));
    }
    return songs;
}

void groupDuplicates(benchmark::State& state)
{
    const Songs songs = makeSongs(int(state.range(0)));
    int groups = 0;
    for (auto _ : state) {
        groups = Classification::groupDuplicates(songs.titles, songs.durations).size();
        benchmark::DoNotOptimize(groups);
    }
    state.counters["groups"] = groups;
    state.SetComplexityN(state.range(0));
}

void groupOneTitle(benchmark::State& state)
{
    Songs songs = makeSongs(int(state.range(0)));
    for (QString& title : songs.titles)
        title = QStringLiteral("Untitled");
    for (auto _ : state)
        benchmark::DoNotOptimize(Classification::groupDuplicates(songs.titles, songs.durations));
    state.SetComplexityN(state.range(0));
}
} // namespace

BENCHMARK(groupDuplicates)
    ->RangeMultiplier(10)
    ->Range(1000, 1000000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oN);
BENCHMARK(groupOneTitle)
    ->RangeMultiplier(10)
    ->Range(1000, 1000000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oN);
BENCHMARK_MAIN();
