// How long the player takes to open a song until its duration is known, and to end while it plays.
#include "audiocore/iaudioplayer.h"
#include "fixtures.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>

namespace {
using namespace std::chrono_literals;

struct Freed
{
    void operator()(IAudioPlayer* player) const { DestroyPlayer(player); }
};
using Player = std::unique_ptr<IAudioPlayer, Freed>;

std::u32string toneOf(const std::string& kind)
{
    return Fixtures::tone(QString::fromStdString(kind)).toStdU32String();
}

void opening(benchmark::State& state, const std::string& kind)
{
    const std::u32string song = toneOf(kind);
    for (auto step : state) {
        Player player(CreatePlayer());
        player->Open(song.c_str());
        if (player->GetDuration() <= 0)
            state.SkipWithError("no duration");
        state.PauseTiming();
        player.reset();
        state.ResumeTiming();
    }
}

void endingWhilePlaying(benchmark::State& state, const std::string& kind)
{
    const std::u32string song = toneOf(kind);
    for (auto step : state) {
        state.PauseTiming();
        Player player(CreatePlayer());
        player->Open(song.c_str());
        player->Play();
        while (player->GetPosition() <= 0)
            std::this_thread::sleep_for(1ms);
        state.ResumeTiming();
        player.reset();
    }
}
} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication app(argc, argv);
    qputenv("MELODRIFT_AUDIO_OUTPUT", "null");
    for (const QString& kind : Fixtures::formats()) {
        const std::string name = kind.toStdString();
        for (auto* row : {benchmark::RegisterBenchmark(("open/" + name).c_str(), opening, name),
                          benchmark::RegisterBenchmark(("end/" + name).c_str(), endingWhilePlaying, name)})
            row->Iterations(50)->UseRealTime()->Unit(benchmark::kMillisecond);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
