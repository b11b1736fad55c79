// Finding songs and ordering them in the views, from the key or the click to the painted view, drawn
// offscreen. One song in five has an accent in its title, ten songs make an album.
#include "centerwidget.h"
#include "qiorvoutil.h"
#include "qmusicinfo.h"
#include "songs/songfind.h"
#include "startup.h"

#include <QApplication>
#include <QHeaderView>
#include <QLineEdit>
#include <QTableView>
#include <QTest>

#include <benchmark/benchmark.h>

#include <functional>
#include <memory>
#include <random>
#include <vector>

namespace {
class Collection
{
public:
    explicit Collection(int songs)
    {
        static const QStringList words = {"midnight", "Ferry",  "the",  "River", "Élan",  "blue",
                                          "Train",    "sky",    "love", "gold",  "Heart", "dance",
                                          "ghost",    "Part 2", "Über", "of",    "night", "rain",
                                          "city",     "summer", "Road", "home",  "light", "song"};
        std::mt19937 random(7);
        const auto word = [&] { return words.at(int(random() % unsigned(words.size()))); };
        for (int i = 0; i < songs; ++i) {
            m_songs.push_back(std::make_unique<QMusicInfo>());
            m_songs.back()->localInfo = std::make_unique<LocalMusicInfo>();
            LocalMusicInfo& info = *m_songs.back()->localInfo;
            const int album = i / 10;
            info.title = word() + ' ' + word() + ' ' + word() + ' ' + QString::number(random() % 10000);
            info.artist = QStringLiteral("Artist %1").arg(album * 7919 % 5000);
            info.album = QStringLiteral("Album number %1").arg(album);
            info.genre = i % 9 ? QStringLiteral("Jazz") : QString();
            info.year = 1970 + album % 50;
            info.trackNumber = 1 + i % 10;
            info.duration = 1000 * (60 + random() % 400);
            info.filePath = QStringLiteral("/music/%1/%2 - %3.mp3").arg(album).arg(i % 10).arg(info.title);
            list.append(m_songs.back().get());
        }
    }

    QList<QMusicInfo*> list;

private:
    std::vector<std::unique_ptr<QMusicInfo>> m_songs;
};

/// A content area with that many songs, as large as in a window of 1120 by 713.
class Screen
{
public:
    Screen(int songs, bool grid) : m_collection(songs)
    {
        m_center.resize(920, 585);
        m_center.show();
        m_center.setMusicInfoList(&m_collection.list);
        if (!grid)
            m_center.OnBtnTableView();
        field = m_center.findChild<QLineEdit*>(QStringLiteral("m_findField"));
        table = m_center.findChild<QTableView*>(QStringLiteral("m_allMusicTableView"));
        view = m_center.findChild<QAbstractItemView*>(grid ? QStringLiteral("m_allMusicListView")
                                                           : QStringLiteral("m_allMusicTableView"));
        settle();
    }
    /// Everything that waits to be laid out and painted is.
    void settle() const
    {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
        view->viewport()->repaint();
    }

    QLineEdit* field;
    QTableView* table;
    QAbstractItemView* view;

private:
    Collection m_collection;
    CenterWidget m_center;
};

/// The first letter leaves most songs, the last leaves few.
void typeWord(benchmark::State& state, bool grid)
{
    Screen screen(int(state.range(0)), grid);
    QApplication::setActiveWindow(screen.field->window());
    screen.field->setFocus(); // texts are read ahead
    const QString word = QStringLiteral("night rain");
    int letter = 0;
    double found = 0;
    for (auto _ : state) {
        if (letter == word.size()) {
            state.PauseTiming();
            screen.field->clear();
            screen.settle();
            letter = 0;
            state.ResumeTiming();
        }
        QTest::keyClick(screen.field, word.at(letter++).toLatin1());
        screen.settle();
        found += screen.view->model()->rowCount();
    }
    state.counters["found"] = benchmark::Counter(found, benchmark::Counter::kAvgIterations);
}

void typeInTable(benchmark::State& state)
{
    typeWord(state, false);
}

void typeInGrid(benchmark::State& state)
{
    typeWord(state, true);
}

/// With an order in force.
void typeInOrder(benchmark::State& state)
{
    Screen screen(int(state.range(0)), false);
    emit screen.table->horizontalHeader()->sectionClicked(0);
    screen.field->setFocus();
    screen.settle();
    for (auto _ : state) {
        screen.field->setText(screen.field->text() == QLatin1String("n") ? QStringLiteral("ni")
                                                                         : QStringLiteral("n"));
        screen.settle();
    }
}

/// What the first look at the songs takes, and what their texts take beside themselves.
void readTexts(benchmark::State& state)
{
    const Collection collection{int(state.range(0))};
    double above = 0;
    for (auto _ : state) {
        SongFind find;
        find.prepare(collection.list);
        above = double(find.memory() - find.textSize()) / double(collection.list.size());
    }
    state.counters["bytes_above_a_text"] = above;
}

/// Title, artist, album, genre, year, track.
void orderTable(benchmark::State& state)
{
    Screen screen(int(state.range(0)), false);
    QHeaderView* header = screen.table->horizontalHeader();
    const int column = int(state.range(1));
    for (auto _ : state) {
        emit header->sectionClicked(column);
        screen.settle();
        state.PauseTiming();
        emit header->sectionClicked(column);
        emit header->sectionClicked(column);
        screen.settle();
        state.ResumeTiming();
    }
}
} // namespace

BENCHMARK(typeInTable)->Arg(100000)->Arg(1000000)->Iterations(20)->Unit(benchmark::kMillisecond);
BENCHMARK(typeInGrid)->Arg(100000)->Arg(1000000)->Iterations(20)->Unit(benchmark::kMillisecond);
BENCHMARK(typeInOrder)->Arg(100000)->Iterations(20)->Unit(benchmark::kMillisecond);
BENCHMARK(readTexts)->Arg(100000)->Arg(1000000)->Iterations(2)->Unit(benchmark::kMillisecond);
BENCHMARK(orderTable)
    ->ArgsProduct({{100000}, {0, 1, 2, 3, 4, 5}})
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    Startup::beforeApplication();
    const QApplication application(argc, argv);
    Startup::afterApplication();
    QIOrvoUtil::m_cleanMode = true;
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
