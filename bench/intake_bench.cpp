// Taking in 2,000 real files, ten songs to an album, next to a bare loop of the tag library over the same
// files.
#include "audiofile.h"
#include "centerwidget.h"
#include "localintake.h"
#include "qmusicinfo.h"
#include "startup.h"

#include <benchmark/benchmark.h>
#include <taglib/attachedpictureframe.h>
#include <taglib/audioproperties.h>
#include <taglib/fileref.h>
#include <taglib/id3v2tag.h>
#include <taglib/mpegfile.h>

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

void bareTagLib(benchmark::State& state)
{
    size_t bytes = 0;
    for (auto _ : state) {
        for (const QString& path : files()) {
            TagLib::MPEG::File file(QFile::encodeName(path).constData());
            bytes += file.tag()->title().size() + file.tag()->artist().size() + file.tag()->album().size() +
                     file.tag()->genre().size() + file.tag()->year() + file.tag()->track() +
                     size_t(file.audioProperties()->lengthInMilliseconds());
            for (const TagLib::ID3v2::Frame* frame : file.ID3v2Tag()->frameListMap()["APIC"])
                bytes += static_cast<const TagLib::ID3v2::AttachedPictureFrame*>(frame)->picture().size();
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
        state.counters["bytes_a_song"] = double(residentBytes() - before) / songs.size();
        state.PauseTiming();
        qDeleteAll(songs);
        QDir(LocalSongReader::coverFolder()).removeRecursively();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * files().size());
}
} // namespace

BENCHMARK(bareTagLib)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(intake)->Unit(benchmark::kMillisecond)->UseRealTime();

int main(int argc, char* argv[])
{
    Startup::beforeApplication();
    const QApplication application(argc, argv);
    Startup::afterApplication();
    files();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
