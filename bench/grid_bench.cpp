// The song views over large collections: 600 x 600 JPEG covers, ten songs to an album, drawn offscreen.
#include "covers/coverloader.h"
#include "covers/coverstore.h"
#include "dupmusicinfo.h"
#include "dupmusiclistmodel.h"
#include "musiclistmodel.h"
#include "qiorvoutil.h"
#include "qmusicinfo.h"
#include "views/covergriddelegate.h"
#include "views/paintdupnumberdelegate.h"
#include "views/viewsetup.h"

#include <QApplication>
#include <QBuffer>
#include <QFile>
#include <QHeaderView>
#include <QListView>
#include <QPainter>
#include <QScrollBar>
#include <QTableView>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <memory>
#include <random>
#include <vector>

namespace {
constexpr int songsPerAlbum = 10;

/// Megabytes in memory now; 0 where the system does not say.
double residentMegabytes()
{
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QIODevice::ReadOnly))
        return 0;
    return statm.readAll().split(' ').value(1).toDouble() * 4096 / 1e6;
}

/// A picture that compresses like a photograph, some 90 kB as a JPEG.
QByteArray coverBytes()
{
    std::mt19937 random(3);
    QImage image(600, 600, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const int grain = int(random() % 24);
            image.setPixel(x, y, qRgb((x * 255 / 600 + grain) & 255, (y / 3 + grain) & 255, (x + y) / 6));
        }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    image.save(&buffer, "JPEG", 85);
    return bytes;
}

/// A collection in the local mode. Bytes after a JPEG's end make every album's cover another file content.
class Collection
{
public:
    explicit Collection(int songs)
    {
        const QByteArray cover = coverBytes();
        for (int i = 0; i < songs; ++i) {
            m_songs.push_back(std::make_unique<QMusicInfo>());
            m_songs.back()->localInfo = std::make_unique<LocalMusicInfo>();
            LocalMusicInfo& info = *m_songs.back()->localInfo;
            const int album = i / songsPerAlbum;
            info.title = QStringLiteral("Song number %1").arg(i);
            info.artist = QStringLiteral("Artist %1").arg(album / 3);
            info.album = QStringLiteral("Album %1").arg(album);
            info.genre = i % 9 ? QStringLiteral("Jazz") : QString();
            info.year = 1970 + album % 50;
            info.trackNumber = 1 + i % songsPerAlbum;
            info.coverPath = m_folder.filePath(QString::number(i));
            const QPixmap picture = m_store.keep(cover + QByteArray::number(album), info.coverPath);
            info.cover = std::make_unique<QPixmap>(picture);
            m_list.append(m_songs.back().get());
        }
    }
    QList<QMusicInfo*>* list() { return &m_list; }

private:
    QTemporaryDir m_folder;
    CoverStore m_store;
    std::vector<std::unique_ptr<QMusicInfo>> m_songs;
    QList<QMusicInfo*> m_list;
};

Collection& tenThousandSongs()
{
    static auto* const collection = new Collection(10000);
    return *collection;
}

/// 100,000 songs that share a thousand entries: only the views' own cost counts there.
QList<QMusicInfo*>& hundredThousandSongs()
{
    static QList<QMusicInfo*> list;
    while (list.size() < 100000)
        list += *tenThousandSongs().list();
    return list;
}

std::unique_ptr<QListView> makeGrid(QAbstractItemModel* model, bool uniform)
{
    auto view = std::make_unique<QListView>();
    ViewSetup::grid(view.get());
    view->setUniformItemSizes(uniform);
    if (uniform)
        view->setItemDelegate(new CoverGridDelegate(view.get()));
    view->resize(616, 600);
    view->setModel(model);
    return view;
}

std::unique_ptr<QTableView> makeTable(QAbstractItemModel* model)
{
    auto view = std::make_unique<QTableView>();
    ViewSetup::table(view.get());
    view->resize(900, 600);
    view->setModel(model);
    view->setColumnWidth(0, 500);
    return view;
}

/// Moves the view by one notch and draws all of it, which is more than a scrolling view has to draw.
void scrollTo(QAbstractItemView& view, int value)
{
    view.verticalScrollBar()->setValue(value);
    QCoreApplication::processEvents();
    view.viewport()->repaint();
}

void gridStepOverSeenCovers(benchmark::State& state)
{
    MusicListModel model;
    model.setDataSourceList(tenThousandSongs().list(), 1, false);
    const auto view = makeGrid(&model, state.range(0) != 0);
    view->show();
    const int notch = view->verticalScrollBar()->singleStep();
    for (int step = 0; step < 50; ++step)
        scrollTo(*view, 20000 + step * notch);
    const qint64 decoded = CoverLoader::decodeCount();
    int step = 0;
    for (auto _ : state)
        scrollTo(*view, 20000 + (++step % 50) * notch);
    state.counters["decoded"] = double(CoverLoader::decodeCount() - decoded);
    state.counters["notch"] = notch;
    state.counters["resident_MB"] = residentMegabytes();
}

void duplicateGridStep(benchmark::State& state)
{
    std::vector<DupMusicInfo> groups(1000);
    QList<DupMusicInfo*> list;
    for (size_t i = 0; i < groups.size(); ++i) {
        groups[i].musicList = tenThousandSongs().list()->mid(int(i) * songsPerAlbum, songsPerAlbum);
        list.append(&groups[i]);
    }
    DupMusicListModel model;
    model.setDupMusicDataSource(&list, 1, false);
    const auto view = makeGrid(&model, true);
    view->setItemDelegate(new PaintDupNumberDelegate(view.get()));
    view->show();
    const int range = view->verticalScrollBar()->maximum();
    for (int value = 0; value < range; value += 140)
        scrollTo(*view, value);
    const qint64 decoded = CoverLoader::decodeCount();
    int value = 0;
    for (auto _ : state)
        scrollTo(*view, (value += 70) % range);
    state.counters["decoded"] = double(CoverLoader::decodeCount() - decoded);
}

void gridStepOverNewCovers(benchmark::State& state)
{
    MusicListModel model;
    model.setDataSourceList(tenThousandSongs().list(), 1, false);
    const auto view = makeGrid(&model, true);
    view->show();
    const int range = view->verticalScrollBar()->maximum();
    CoverLoader::setMemoryLimit(0); // forget what was seen
    CoverLoader::setMemoryLimit(192ll * 1024 * 1024);
    const qint64 decoded = CoverLoader::decodeCount();
    int value = 0;
    for (auto _ : state)
        scrollTo(*view, (value += 140) % range); // a full row of five songs
    const double decodings = double(CoverLoader::decodeCount() - decoded);
    state.counters["decoded_per_step"] = decodings / double(state.iterations());
    state.counters["resident_MB"] = residentMegabytes();
}

void gridOpen(benchmark::State& state)
{
    const bool large = state.range(0) > 10000;
    for (auto _ : state) {
        MusicListModel model;
        model.setDataSourceList(large ? &hundredThousandSongs() : tenThousandSongs().list(), 1, false);
        const auto view = makeGrid(&model, state.range(1) != 0);
        view->show();
        scrollTo(*view, 0);
    }
}

void gridResize(benchmark::State& state)
{
    const bool large = state.range(0) > 10000;
    MusicListModel model;
    model.setDataSourceList(large ? &hundredThousandSongs() : tenThousandSongs().list(), 1, false);
    const auto view = makeGrid(&model, state.range(1) != 0);
    view->show();
    scrollTo(*view, 0);
    int width = 616;
    for (auto _ : state) {
        width = width == 616 ? 760 : 616;
        view->resize(width, 600);
        // The view puts its layout off by a timer of 100 ms; ask for it now.
        view->doItemsLayout();
        scrollTo(*view, 0);
    }
}

void tableStep(benchmark::State& state)
{
    MusicListModel model;
    model.setDataSourceList(&hundredThousandSongs(), 6, false);
    const auto view = makeTable(&model);
    view->show();
    const int range = view->verticalScrollBar()->maximum();
    int value = 0;
    for (auto _ : state)
        scrollTo(*view, (value += 3) % range);
    state.counters["rows"] = model.rowCount();
}

void tableOpen(benchmark::State& state)
{
    for (auto _ : state) {
        MusicListModel model;
        model.setDataSourceList(&hundredThousandSongs(), 6, false);
        const auto view = makeTable(&model);
        view->show();
        scrollTo(*view, 0);
    }
}

/// One song of so many brings a new cover, the others bring the same bytes again.
void storeCovers(benchmark::State& state)
{
    const QByteArray cover = coverBytes();
    const QTemporaryDir folder;
    CoverStore store;
    std::vector<QPixmap> covers(size_t(state.max_iterations));
    QByteArray bytes;
    int song = 0;
    for (auto _ : state) {
        if (song % state.range(0) == 0)
            bytes = cover + QByteArray::number(song);
        store.keep(bytes, folder.filePath(QString::number(song)), &covers[size_t(song)]);
        if (++song == int(covers.size()))
            store.finish();
    }
    state.counters["cover_kB"] = double(cover.size()) / 1000;
    state.counters["covers_per_s"] = benchmark::Counter(double(song), benchmark::Counter::kIsRate);
}
} // namespace

BENCHMARK(gridStepOverSeenCovers)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(duplicateGridStep)->Unit(benchmark::kMillisecond);
BENCHMARK(gridStepOverNewCovers)->Iterations(300)->Unit(benchmark::kMillisecond);
BENCHMARK(gridOpen)->ArgsProduct({{10000, 100000}, {0, 1}})->Unit(benchmark::kMillisecond);
BENCHMARK(gridResize)->ArgsProduct({{10000, 100000}, {0, 1}})->Unit(benchmark::kMillisecond);
BENCHMARK(tableStep)->Unit(benchmark::kMillisecond);
BENCHMARK(tableOpen)->Unit(benchmark::kMillisecond);
BENCHMARK(storeCovers)
    ->ArgName("shared_by")
    ->Arg(1)
    ->Arg(10)
    ->Arg(3000)
    ->Iterations(3000)
    ->UseRealTime()
    ->Unit(benchmark::kMicrosecond);

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    QIOrvoUtil::m_cleanMode = true;
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
