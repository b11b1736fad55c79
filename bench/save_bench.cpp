// Saving a title into files of a few kinds: what the copy, the checks and the device take together.
#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "fixtures.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QTemporaryDir>

namespace {
void saving(benchmark::State& state, const std::string& kind)
{
    const QTemporaryDir folder;
    const QString path = Fixtures::copyTone(QString::fromStdString(kind), folder.path());
    int round = 0;
    for (auto step : state)
        if (AudioFile::write(path, {{TAG_TITLE, QStringLiteral("Title %1").arg(++round)}}) != 0)
            state.SkipWithError("not saved");
}
} // namespace

BENCHMARK_CAPTURE(saving, mp3, "mp3")->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK_CAPTURE(saving, flac, "flac")->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK_CAPTURE(saving, m4a, "m4a")->Unit(benchmark::kMicrosecond)->UseRealTime();

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
