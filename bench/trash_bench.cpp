// Moving files into the trash and back, next to deleting as many. A measure of each is a new set of files.
#include "base/platform.h"
#include "base/trash.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {
constexpr int files = 10000;
constexpr int filesOfAFolder = 12;

/// Times the work; beside the clock it tells what processors did for it, which a busy machine leaves alone.
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

/// Music in folders like those of albums, and a trash for it.
class Collection
{
public:
    /// All files of one name, one in each folder, or a name for each.
    enum class Names { Equal, Different };

    explicit Collection(Names names = Names::Different)
    {
        std::string pattern = (fs::temp_directory_path() / "trash_bench-XXXXXX").string();
        if (!::mkdtemp(pattern.data()))
            std::abort();
        m_folder = pattern;
        ::setenv("XDG_DATA_HOME", (m_folder / "data").c_str(), 1);
        const bool equal = names == Names::Equal;
        for (int i = 0; i < files; ++i) {
            const fs::path album = m_folder / "music" / std::to_string(equal ? i : i / filesOfAFolder);
            fs::create_directories(album);
            m_paths.push_back((album / (equal ? "01 Intro.mp3" : std::to_string(i) + ".mp3")).string());
            std::ofstream(m_paths.back()) << std::string(4000, 'x');
            m_states.emplace_back();
            if (!base::stateOf(m_paths.back(), m_states.back()))
                std::abort();
        }
    }
    ~Collection()
    {
        std::error_code failure;
        fs::remove_all(m_folder, failure);
    }
    Collection(const Collection&) = delete;
    Collection& operator=(const Collection&) = delete;

    void takeAll()
    {
        base::Trash trash;
        std::string error;
        m_taken.resize(files);
        for (std::size_t i = 0; i < files; ++i)
            if (trash.take(m_paths[i], m_states[i], m_taken[i], error) != base::Trash::Taking::Done)
                std::abort();
    }
    void restoreAll() const
    {
        base::Trash trash;
        std::string error;
        for (const base::TrashedFile& file : m_taken)
            if (trash.restore(file, error) != base::Trash::Restoring::Done)
                std::abort();
    }
    void deleteAll() const
    {
        for (const std::string& path : m_paths)
            std::remove(path.c_str());
    }

private:
    fs::path m_folder;
    std::vector<std::string> m_paths;
    std::vector<base::FileState> m_states;
    std::vector<base::TrashedFile> m_taken;
};

void deletion(benchmark::State& state)
{
    for (auto unused : state) {
        (void)unused;
        const Collection collection;
        measure(state, [&] { collection.deleteAll(); });
    }
    state.SetItemsProcessed(state.iterations() * files);
}
BENCHMARK(deletion)->UseManualTime()->Iterations(3)->Unit(benchmark::kMillisecond);

void intoTheTrash(benchmark::State& state, Collection::Names names)
{
    for (auto unused : state) {
        (void)unused;
        Collection collection(names);
        measure(state, [&] { collection.takeAll(); });
    }
    state.SetItemsProcessed(state.iterations() * files);
}
BENCHMARK_CAPTURE(intoTheTrash, differentNames, Collection::Names::Different)
    ->UseManualTime()
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(intoTheTrash, oneName, Collection::Names::Equal)
    ->UseManualTime()
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);

void backFromTheTrash(benchmark::State& state)
{
    for (auto unused : state) {
        (void)unused;
        Collection collection;
        collection.takeAll();
        measure(state, [&] { collection.restoreAll(); });
    }
    state.SetItemsProcessed(state.iterations() * files);
}
BENCHMARK(backFromTheTrash)->UseManualTime()->Iterations(3)->Unit(benchmark::kMillisecond);
} // namespace

BENCHMARK_MAIN();
