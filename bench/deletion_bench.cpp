// Clearing all duplicate groups of a collection on disk and taking that back, next to deleting the same
// number of files bare.
#include "audiocore/iaudiotag.h"
#include "centerwidget.h"
#include "deletealldupmusicthread.h"
#include "duplicatemusicdetailedwidget.h"
#include "dupmusicbarwidget.h"
#include "dupmusicinfo.h"
#include "qiorvoutil.h"
#include "qmusicinfo.h"
#include "songs/changehistory.h"
#include "songs/filechanges.h"
#include "songs/removaltally.h"
#include "songs/songundo.h"
#include "startup.h"

#include <QApplication>
#include <QEventLoop>
#include <QFile>
#include <QListView>
#include <QSet>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <chrono>
#include <ctime>
#include <functional>
#include <memory>
#include <new>
#include <vector>

#ifdef __linux__
#include <malloc.h>
#endif

namespace {
/// Times the work; beside the clock it tells what processors did for it, on all threads, which a busy machine
/// leaves alone.
void measure(benchmark::State& state, const std::function<void()>& work)
{
    const auto start = std::chrono::steady_clock::now();
    const std::clock_t processorStart = std::clock();
    work();
    const double processor = double(std::clock() - processorStart) / CLOCKS_PER_SEC;
    state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    benchmark::Counter& told = state.counters["processor ms"];
    told.value += processor * 1000;
    told.flags = benchmark::Counter::kAvgIterations;
}

/// Ten frames of silence, 128 kbit/s at 44,100 Hz.
const QByteArray& music()
{
    static const QByteArray frames = (QByteArray::fromHex("FFFB9064") + QByteArray(413, 0)).repeated(10);
    return frames;
}

QString makeFile(const QTemporaryDir& folder, int number)
{
    QString path = folder.filePath(QString::number(number) + QLatin1String(".mp3"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(music()) != music().size())
        qFatal("cannot write %s", qUtf8Printable(path));
    return path;
}

/// Songs on small files, the first of which are duplicates of one another in pairs.
struct Collection
{
    Collection(int count, int duplicates)
    {
        for (int i = 0; i < count; ++i) {
            songs.push_back(std::make_unique<QMusicInfo>());
            songs.back()->localInfo = std::make_unique<LocalMusicInfo>();
            songs.back()->localInfo->filePath = makeFile(folder, i);
            songs.back()->localInfo->file = FileState::ofEntry(songs.back()->localInfo->filePath);
            all.append(songs.back().get());
            tags.append(CreateTag());
            ownTags.append(tags.last());
        }
        undefined = all;
        for (int i = 0; i < duplicates; ++i) {
            ownGroups.push_back(std::make_unique<DupMusicInfo>());
            ownGroups.back()->musicList = {all.at(2 * i), all.at(2 * i + 1)};
            groups.append(ownGroups.back().get());
        }
    }
    ~Collection()
    {
        for (IAudioTag* tag : ownTags)
            ::operator delete(tag);
    }
    /// What went out of the list is owned by who took it out.
    void disownRemoved()
    {
        const QSet<const QMusicInfo*> left(all.begin(), all.end());
        for (auto& song : songs)
            if (!left.contains(song.get()))
                (void)song.release();
    }
    Collection(const Collection&) = delete;
    Collection& operator=(const Collection&) = delete;

    QTemporaryDir folder;
    std::vector<std::unique_ptr<QMusicInfo>> songs;
    std::vector<std::unique_ptr<DupMusicInfo>> ownGroups;
    QList<IAudioTag*> ownTags;
    QList<QMusicInfo*> all;
    QList<QMusicInfo*> undefined;
    QList<DupMusicInfo*> groups;
    QList<IAudioTag*> tags;
};

void clearAll(benchmark::State& state)
{
    const int count = int(state.range(0));
    const int duplicates = int(state.range(1));
    for (auto unused : state) {
        (void)unused;
        Collection collection(count, duplicates);
        DeleteAllDupMusicThread thread;
        QEventLoop loop;
        QObject::connect(&thread, &DeleteAllDupMusicThread::emitAllMusicInfo, &loop, &QEventLoop::quit);
        thread.GetDupMusicBeDelete(&collection.all, &collection.groups, &collection.undefined,
                                   &collection.tags);
        measure(state, [&] {
            thread.start();
            loop.exec();
        });
        thread.wait();
        if (collection.all.size() != count - duplicates)
            state.SkipWithError("not every duplicate went");
    }
    state.SetItemsProcessed(state.iterations() * duplicates);
}
BENCHMARK(clearAll)
    ->Args({12500, 2500})
    ->Args({50000, 10000})
    ->Args({100000, 10000})
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

/// Bytes that are allocated, where that can be asked.
double usedMemory()
{
#if defined(__GLIBC__) && (__GLIBC__ > 2 || __GLIBC_MINOR__ >= 33)
    return double(::mallinfo2().uordblks);
#else
    return 0;
#endif
}

/// Files, lists and tag objects.
void takeAllBack(benchmark::State& state)
{
    const int count = int(state.range(0));
    const int duplicates = int(state.range(1));
    for (auto unused : state) {
        (void)unused;
        Collection collection(count, duplicates);
        const SongLists lists = {&collection.all, &collection.groups, &collection.undefined,
                                 &collection.tags};
        const QVector<SongRemoval::Removal> plan = SongRemoval::planOfAll(collection.groups);
        const double before = usedMemory();
        auto removal = std::make_unique<FileRemoval>();
        for (const SongRemoval::Removal& one : plan)
            SongRemoval::removeFile(*one.song, nullptr, KeptFiles(), *removal);
        SongUndo undo;
        undo.songsLeft(SongRemoval::removeAll(lists, plan));
        RemovalTally tally;
        tally.addFiles(removal->removed());
        removal.reset();
        undo.endDeletion(tally);
        tally = RemovalTally();
        state.counters["bytes a song"] = (usedMemory() - before) / duplicates;
        measure(state, [&] { undo.undo(lists); });
        if (collection.all.size() != count)
            state.SkipWithError("not every song came back");
    }
    state.SetItemsProcessed(state.iterations() * duplicates);
}
BENCHMARK(takeAllBack)
    ->Args({50000, 10000})
    ->Args({100000, 10000})
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

/// As many edits as are kept, of songs with pictures of that many bytes, and what they take.
void keepEdits(benchmark::State& state)
{
    const int pictureBytes = int(state.range(0));
    const QTemporaryDir folder;
    for (auto unused : state) {
        (void)unused;
        FileChanges::Before before = FileChanges::Before::of(makeFile(folder, 0));
        before.state = FileState(); // whatever is there now was written by the edit
        ChangeHistory history;
        const double emptyUse = usedMemory();
        measure(state, [&] {
            for (int i = 0; i < 2 * ChangeHistory::mostSteps; ++i) {
                before.content.picture = QByteArray(pictureBytes, 'x');
                history.add(FileChanges::edit(before, nullptr));
            }
        });
        before.content.picture.clear();
        state.counters["steps"] = history.steps();
        state.counters["bytes a step"] = (usedMemory() - emptyUse) / history.steps();
    }
}
BENCHMARK(keepEdits)->Arg(0)->Arg(500000)->Arg(2000000)->UseManualTime()->Iterations(1)->Unit(
    benchmark::kMillisecond);

/// A window's views over one group of so many songs, in the list of groups.
struct OneGroup
{
    explicit OneGroup(int count) : collection(count, 0)
    {
        for (QMusicInfo* song : qAsConst(collection.all)) {
            song->localInfo->title = QStringLiteral("Title");
            song->localInfo->duration = 180000;
        }
        center.resize(920, 585);
        center.show();
        center.setMusicInfoList(&collection.all);
        center.slotShowDuplicateMusicView();
    }
    void show()
    {
        center.SlotClickDupMusicIndex(
            center.findChild<QListView*>("m_dupMusicListView")->model()->index(0, 0));
    }
    QList<DupMusicbarWidget*> rows() const { return center.findChildren<DupMusicbarWidget*>(); }

    Collection collection;
    CenterWidget center;
};

/// Makes the rows of a group, and shows those that there is room for.
void showRows(benchmark::State& state)
{
    const int count = int(state.range(0));
    for (auto unused : state) {
        (void)unused;
        OneGroup group(count);
        QApplication::processEvents();
        measure(state, [&group] {
            group.show();
            QApplication::processEvents();
        });
        if (group.rows().size() != count)
            state.SkipWithError("not every song has its row");
    }
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(showRows)->Arg(250)->Arg(2000)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);

/// Deletes the unmarked half of a group from its rows.
void clearShownGroup(benchmark::State& state)
{
    const int count = int(state.range(0));
    for (auto unused : state) {
        (void)unused;
        OneGroup group(count);
        group.show();
        const QList<DupMusicbarWidget*> rows = group.rows();
        for (int row = 1; row < count / 2; ++row)
            rows.at(row)->SlotOnBtnCheckBox();
        QApplication::processEvents();
        auto* panel = group.center.findChild<DuplicateMusicDetailedWidget*>();
        measure(state, [panel] { panel->SlotDeleteSongWasSelected(); });
        if (group.collection.all.size() != count / 2)
            state.SkipWithError("not every unmarked song went");
        group.collection.disownRemoved();
    }
    state.SetItemsProcessed(state.iterations() * count / 2);
}
BENCHMARK(clearShownGroup)
    ->Arg(250)
    ->Arg(1000)
    ->Arg(4000)
    ->Arg(20000)
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

void bareRemoval(benchmark::State& state)
{
    const int count = int(state.range(0));
    for (auto unused : state) {
        (void)unused;
        const QTemporaryDir folder;
        QStringList paths;
        for (int i = 0; i < count; ++i)
            paths.append(makeFile(folder, i));
        measure(state, [&] {
            for (const QString& path : qAsConst(paths))
                QFile::remove(path);
        });
    }
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(bareRemoval)->Arg(10000)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
} // namespace

int main(int argc, char** argv)
{
    const QTemporaryDir trash; // not the user's
    qputenv("XDG_DATA_HOME", QFile::encodeName(trash.path()));
    Startup::beforeApplication();
    const QApplication application(argc, argv);
    Startup::afterApplication();
    QIOrvoUtil::m_cleanMode = true;
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
