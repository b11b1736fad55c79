// Taking in 2,000 real files, ten songs to an album, next to a bare loop of the tag library over the same
// files, and to the reading of melodrift-cli, which is to be at least 1.6 times as fast on two processors:
//     intake_bench --benchmark_repetitions=9 --benchmark_enable_random_interleaving=true
// takes turns, so that other work on the machine is shared by all. The processor's time is that of all
// threads.
#include "audiofile.h"
#include "centerwidget.h"
#include "collection/songreading.h"
#include "qmusicinfo.h"
#include "songs/localintake.h"
#include "startup.h"

#include <benchmark/benchmark.h>
#include <taglib/attachedpictureframe.h>
#include <taglib/audioproperties.h>
#include <taglib/fileref.h>
#include <taglib/id3v2tag.h>
#include <taglib/mpegfile.h>
#include <taglib/tpropertymap.h>

#include <QApplication>
#include <QDir>
#include <QDirIterator>
#include <QProcess>

namespace {
const QStringList& files()
{
    static const QStringList found = [] {
        const QString folder = QDir::cleanPath(QCoreApplication::applicationDirPath() +
                                               QLatin1String("/../../fixtures/bench-2000"));
        if (!QDir(folder).exists())
            QProcess::execute(QCoreApplication::applicationDirPath() + QLatin1String("/make_collection"),
                              {folder, QStringLiteral("2000")});
        QStringList paths;
        QDirIterator walk(folder, {QStringLiteral("*.mp3")}, QDir::Files, QDirIterator::Subdirectories);
        while (walk.hasNext())
            paths.append(walk.next());
        return paths;
    }();
    return found;
}

qint64 residentBytes()
{
    QFile status(QStringLiteral("/proc/self/statm"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    return status.readAll().split(' ').value(1).toLongLong() * 4096;
}

/// The floor: tags, properties and the picture's bytes of each file, through the tag library alone.
void bareTagLib(benchmark::State& state)
{
    size_t bytes = 0;
    for (auto _ : state) {
        for (const QString& path : files()) {
            const TagLib::FileRef file(QFile::encodeName(path).constData());
            for (const auto& [key, values] : file.file()->properties())
                bytes += values.toString().to8Bit(true).size();
            bytes += size_t(file.audioProperties()->lengthInMilliseconds());
            const auto* tag = static_cast<TagLib::MPEG::File*>(file.file())->ID3v2Tag();
            for (const TagLib::ID3v2::Frame* frame : tag->frameListMap()["APIC"]) {
                const TagLib::ByteVector data =
                    static_cast<const TagLib::ID3v2::AttachedPictureFrame*>(frame)->picture();
                bytes += QByteArray(data.data(), int(data.size())).size();
            }
        }
    }
    benchmark::DoNotOptimize(bytes);
    state.SetItemsProcessed(state.iterations() * files().size());
}

void intake(benchmark::State& state)
{
    for (auto _ : state) {
        const qint64 before = residentBytes();
        LocalIntake taker;
        QList<QMusicInfo*> songs;
        QList<IAudioTag*> tags;
        taker.add(files(), songs, tags);
        state.PauseTiming();
        taker.reader().finish();
        state.counters["bytes_a_song"] = double(residentBytes() - before) / songs.size();
        qDeleteAll(songs);
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * files().size());
}

/// What melodrift-cli does, in this process.
void readingOnAllProcessors(benchmark::State& state)
{
    quint64 read = 0;
    for (auto _ : state) {
        SongReading reading([&read](SongFile&& song) { read += song.isRead(); });
        for (const QString& path : files())
            reading.add(QFile::encodeName(path).toStdString());
        reading.finish();
    }
    state.SetItemsProcessed(qint64(read));
}

void inTurns(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Unit(benchmark::kMillisecond)->UseRealTime()->MeasureProcessCPUTime();
}
} // namespace

BENCHMARK(bareTagLib)->Apply(inTurns);
BENCHMARK(intake)->Apply(inTurns);
BENCHMARK(readingOnAllProcessors)->Apply(inTurns);

int main(int argc, char* argv[])
{
    Startup::beforeApplication();
    const QApplication application(argc, argv);
    Startup::afterApplication();
    files();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    // Not between the rounds: file systems are slow to use again what was just removed.
    QDir(LocalSongReader::coverFolder()).removeRecursively();
    return 0;
}
