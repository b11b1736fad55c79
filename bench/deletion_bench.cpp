// Clearing all duplicate groups of a collection on disk, next to deleting the same number of files bare.
#include "audiocore/iaudiotag.h"
#include "centerwidget.h"
#include "deletealldupmusicthread.h"
#include "duplicatemusicdetailedwidget.h"
#include "dupmusicbarwidget.h"
#include "dupmusicinfo.h"
#include "qiorvoutil.h"
#include "qmusicinfo.h"
#include "startup.h"

#include <QApplication>
#include <QEventLoop>
#include <QFile>
#include <QListView>
#include <QSet>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <chrono>
#include <functional>
#include <memory>
#include <new>
#include <vector>

namespace {
double seconds(const std::function<void()>& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

QString makeFile(const QTemporaryDir& folder, int number)
{
    QString path = folder.filePath(QString::number(number) + QLatin1String(".mp3"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(QByteArray(4000, 'x')) != 4000)
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
        state.SetIterationTime(seconds([&] {
            thread.start();
            loop.exec();
        }));
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

/// Deletes the unmarked half of a group from its rows.
void clearShownGroup(benchmark::State& state)
{
    const int count = int(state.range(0));
    for (auto unused : state) {
        (void)unused;
        Collection collection(count, 0);
        for (QMusicInfo* song : qAsConst(collection.all)) {
            song->localInfo->title = QStringLiteral("Title");
            song->localInfo->duration = 180000;
        }
        CenterWidget center;
        center.resize(920, 585);
        center.show();
        center.setMusicInfoList(&collection.all);
        center.slotShowDuplicateMusicView();
        center.SlotClickDupMusicIndex(
            center.findChild<QListView*>("m_dupMusicListView")->model()->index(0, 0));
        auto* panel = center.findChild<DuplicateMusicDetailedWidget*>();
        const auto rows = panel->findChildren<DupMusicbarWidget*>();
        for (int row = 1; row < count / 2; ++row)
            rows.at(row)->SlotOnBtnCheckBox();
        QApplication::processEvents();
        state.SetIterationTime(seconds([panel] { panel->SlotDeleteSongWasSelected(); }));
        if (collection.all.size() != count / 2)
            state.SkipWithError("not every unmarked song went");
        collection.disownRemoved();
    }
    state.SetItemsProcessed(state.iterations() * count / 2);
}
BENCHMARK(clearShownGroup)
    ->Arg(250)
    ->Arg(1000)
    ->Arg(4000)
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
        state.SetIterationTime(seconds([&] {
            for (const QString& path : qAsConst(paths))
                QFile::remove(path);
        }));
    }
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(bareRemoval)->Arg(10000)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
} // namespace

int main(int argc, char** argv)
{
    Startup::beforeApplication();
    const QApplication application(argc, argv);
    Startup::afterApplication();
    QIOrvoUtil::m_cleanMode = true;
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
