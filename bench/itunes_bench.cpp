// Reading generated music libraries of 10,000 and 100,000 songs, next to a bare pass of an XML parser over
// the same bytes; and 10,000 deletions from 100,000 songs until they are in the file, and until that is taken
// back.
#include "itunes/delmusiclib.h"
#include "itunes/itunesmusiclibrary.h"
#include "itunes/takeback.h"
#include "itunesfixture.h"

#include <benchmark/benchmark.h>
#include <expat.h>

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <sys/stat.h>
#include <thread>
#include <vector>

namespace {
const QTemporaryDir& folder()
{
    static const QTemporaryDir made;
    return made;
}

/// The library of so many songs; made once.
QByteArray libraryOf(int songs)
{
    const QString path = folder().filePath(QString("Library %1.xml").arg(songs));
    if (!QFile::exists(path))
        Fixtures::writeLibrary(path, Fixtures::largeItunesLibrary(songs));
    return QFile::encodeName(path);
}

/// The most memory that the process has held since the last reset, in megabytes; where the system tells.
double peakMegabytes()
{
    QFile status("/proc/self/status");
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray text = status.readAll();
    const int at = text.indexOf("VmHWM:");
    return at < 0 ? 0 : text.mid(at + 6, 20).simplified().split(' ').first().toDouble() / 1024;
}

void resetPeak()
{
    QFile file("/proc/self/clear_refs");
    if (file.open(QIODevice::WriteOnly))
        file.write("5");
}

/// What tells one writing of the file from the next.
ino_t versionOf(const QByteArray& path)
{
    struct stat status = {};
    return ::stat(path.constData(), &status) == 0 ? status.st_ino : 0;
}

/// The floor: every element and every text handed to functions that do nothing.
void bareParser(benchmark::State& state)
{
    const QByteArray path = libraryOf(int(state.range(0)));
    std::vector<char> block(256 * 1024);
    for (auto _ : state) {
        const XML_Parser parser = XML_ParserCreate(nullptr);
        XML_SetElementHandler(
            parser, [](void*, const XML_Char*, const XML_Char**) {}, [](void*, const XML_Char*) {});
        XML_SetCharacterDataHandler(parser, [](void*, const XML_Char*, int) {});
        std::FILE* file = std::fopen(path.constData(), "rb");
        std::size_t got = 1;
        while (got > 0) {
            got = std::fread(block.data(), 1, block.size(), file);
            if (XML_Parse(parser, block.data(), int(got), got == 0) != XML_STATUS_OK)
                state.SkipWithError("the library is not well-formed");
        }
        std::fclose(file);
        XML_ParserFree(parser);
    }
    state.SetBytesProcessed(state.iterations() * QFileInfo(QFile::decodeName(path)).size());
}

void read(benchmark::State& state)
{
    const QByteArray path = libraryOf(int(state.range(0)));
    setITunesLibraryOption(path.constData());
    resetPeak();
    iTunesTrackRecord* records = nullptr;
    int count = 0;
    for (auto _ : state)
        GetMusicInfo(&records, &count);
    if (count != state.range(0))
        state.SkipWithError("not all songs were read");
    state.counters["peak_MB"] = peakMegabytes();
    state.SetBytesProcessed(state.iterations() * QFileInfo(QFile::decodeName(path)).size());
}

/// Waits for the background to write what was deleted.
void waitForWriting(const QByteArray& path)
{
    launchiTunes(); // without the pause
    while (QFile::exists(QFile::decodeName(path) + ".melodrift-journal"))
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

/// 10,000 deletions that are in the file, or in the journal alone.
void takingBack(benchmark::State& state)
{
    constexpr int songs = 100000;
    constexpr int gone = 10000;
    const bool written = state.range(0) != 0;
    const QString copy = folder().filePath("Library.xml");
    const QByteArray path = QFile::encodeName(copy);
    for (auto _ : state) {
        state.PauseTiming();
        QFile::remove(copy);
        QFile::copy(QFile::decodeName(libraryOf(songs)), copy);
        setITunesLibraryOption(path.constData());
        iTunesTrackRecord* records = nullptr;
        int count = 0;
        GetMusicInfo(&records, &count);
        std::vector<uint64_t> ids;
        for (int i = 0; i < gone; ++i) {
            ids.push_back(std::strtoull(records[i * 10].persistentId, nullptr, 16));
            deleteMusic(ids.back());
        }
        if (written)
            waitForWriting(path);
        state.counters["kept_MB"] = double(takeBackBytes()) / 1024 / 1024;
        state.ResumeTiming();
        if (takeBackDeletions(ids.data(), ids.size()) == 0)
            state.SkipWithError("the songs did not come back");
        state.PauseTiming();
        closeITunesLibrary();
        QFile before(QFile::decodeName(libraryOf(songs)));
        QFile after(copy);
        if (!before.open(QIODevice::ReadOnly) || !after.open(QIODevice::ReadOnly) ||
            before.readAll() != after.readAll())
            state.SkipWithError("the library is not as it was");
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * gone);
}

void deletions(benchmark::State& state)
{
    constexpr int songs = 100000;
    const QString original = QFile::decodeName(libraryOf(songs));
    const QString copy = folder().filePath("Library.xml");
    const QByteArray path = QFile::encodeName(copy);
    for (auto _ : state) {
        state.PauseTiming();
        QFile::remove(copy);
        QFile::copy(original, copy);
        setITunesLibraryOption(path.constData());
        iTunesTrackRecord* records = nullptr;
        int count = 0;
        GetMusicInfo(&records, &count);
        std::set<ino_t> versions;
        state.ResumeTiming();
        for (int i = 0; i < state.range(0); ++i) {
            deleteMusic(std::strtoull(records[i * 10].persistentId, nullptr, 16));
            versions.insert(versionOf(path));
        }
        closeITunesLibrary();
        state.PauseTiming();
        versions.insert(versionOf(path));
        state.counters["times_written"] = double(versions.size() - 1);
        GetMusicInfo(&records, &count);
        if (count != songs - state.range(0))
            state.SkipWithError("not all songs were deleted");
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
} // namespace

BENCHMARK(bareParser)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(read)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(deletions)->Arg(10000)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);
BENCHMARK(takingBack)
    ->ArgName("written")
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(1);

BENCHMARK_MAIN();
