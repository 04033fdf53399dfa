#include <algorithm>
#include <array>
#include <chrono>
#include <memory>
#include <vector>

#include <QCoreApplication>
#include <benchmark/benchmark.h>

#include "bench/bench_queue.h"
#include "bench/memory.h"
#include "bench/scale_table.h"
#include "queue/expand.h"

namespace boxlift::bench {
namespace {

constexpr const char* addTime = "adding, s";
constexpr const char* addTimePerJob = "adding, us per job";
constexpr const char* walkTime = "  of it walking the folders, s";
constexpr const char* analysisTime = "adding and analysing, s";
constexpr const char* addHeld = "  main thread held, but for the walk, ms";
constexpr const char* jobMemory = "memory, bytes per job";
constexpr const char* runTime = "running, us per job";
constexpr const char* runHeld = "  main thread held, ms";
constexpr const char* clearAllTime = "clearing all, ms";
constexpr const char* clearAllHeld = "  main thread held soon afterwards, ms";
constexpr const char* clearHalfTime = "clearing every second one, ms";
constexpr const char* clearHalfHeld = "  main thread held soon after that, ms";
constexpr const char* removeFirstTime = "removing the first one, us";
constexpr const char* removeMiddleTime = "removing one in the middle, us";
constexpr const char* readTime = "reading pendingCount and hasFinished, ns";

constexpr auto worst = ScaleRow::Counts::most;

constexpr auto rows = std::to_array<ScaleRow>({
    {addTime, 3, "1"},
    {addTimePerJob, 1, "linear"},
    {walkTime, 3},
    {analysisTime, 3},
    {addHeld, 1, "100", worst},
    {jobMemory, 0, "4096", worst},
    {runTime, 1},
    {runHeld, 1, "100", worst},
    {clearAllTime, 1, "100"},
    {clearAllHeld, 1, "100", worst},
    {clearHalfTime, 1, "100"},
    {clearHalfHeld, 1, "100", worst},
    {removeFirstTime, 1},
    {removeMiddleTime, 1},
    {readTime, 1},
});

constexpr double milli = 1e3;
constexpr double micro = 1e6;
constexpr double nano = 1e9;

/// A second walk, for the first one leaves the folders in the system's cache.
Seconds timeOfWalk(const FileTree& tree) {
    benchmark::DoNotOptimize(expand({tree.path()}));
    const auto start = Clock::now();
    benchmark::DoNotOptimize(expand({tree.path()}));
    return secondsSince(start);
}

void adds(benchmark::State& state, const FileTree& tree) {
    const Seconds walk = timeOfWalk(tree);
    giveBackFreeMemory();
    const std::size_t memory = residentBytes();
    BenchQueue queue;
    const auto start = Clock::now();
    queue->addPaths({tree.path()});
    const Seconds adding = secondsSince(start);
    queue.waitForAnalyses();
    if (queue.count() != tree.fileCount())
        state.SkipWithError("some files have no job");
    state.counters[analysisTime] = secondsSince(start).count();
    state.counters[addTime] = adding.count();
    state.counters[addTimePerJob] = adding.count() * micro / queue.count();
    state.counters[walkTime] = walk.count();
    state.counters[addHeld] = std::max(adding - walk, queue.turns().takeLongest()).count() * milli;
    state.counters[jobMemory] =
        static_cast<double>(residentBytes() - memory) / static_cast<double>(queue.count());
}

void runs(benchmark::State& state, const FileTree& tree) {
    BenchQueue queue;
    queue.fill(tree);
    queue.turns().takeLongest();
    const auto start = Clock::now();
    queue.convertAll();
    state.counters[runTime] = secondsSince(start).count() * micro / queue.count();
    state.counters[runHeld] = queue.turns().takeLongest().count() * milli;
}

/// Clears away what is done and goes on for as long as removed jobs may be kept.
void clears(benchmark::State& state, BenchQueue& queue, const char* time, const char* held) {
    queue.turns().takeLongest();
    const auto start = Clock::now();
    queue->clearFinished();
    state.counters[time] = secondsSince(start).count() * milli;
    queue.turns().until([&] { return secondsSince(start) > std::chrono::seconds(2); });
    state.counters[held] = queue.turns().takeLongest().count() * milli;
}

void clearsAll(benchmark::State& state, const FileTree& tree) {
    BenchQueue queue;
    queue.fill(tree);
    queue.convertAll();
    clears(state, queue, clearAllTime, clearAllHeld);
    if (queue.count() != 0)
        state.SkipWithError("jobs are left");
}

void clearsHalf(benchmark::State& state, const FileTree& tree) {
    BenchQueue queue;
    queue.fill(tree);
    queue.convertAll();
    for (int row = 0; row < queue.count(); row += 2)
        queue.job(row).setTarget(Target::mov);
    clears(state, queue, clearHalfTime, clearHalfHeld);
    if (queue.count() != tree.fileCount() / 2)
        state.SkipWithError("other jobs than every second one are left");
}

/// One after another, the mean.
template <typename RowOf>
void removes(benchmark::State& state, BenchQueue& queue, const char* time, RowOf rowOf) {
    constexpr int removals = 100;
    const auto start = Clock::now();
    for (int i = 0; i < removals; ++i)
        queue->remove(&queue.job(rowOf(queue.count())));
    state.counters[time] = secondsSince(start).count() * micro / removals;
}

void removesSingleOnes(benchmark::State& state, const FileTree& tree) {
    BenchQueue queue;
    queue.fill(tree);
    removes(state, queue, removeFirstTime, [](int) { return 0; });
    removes(state, queue, removeMiddleTime, [](int count) { return count / 2; });
}

void readsCounts(benchmark::State& state, const FileTree& tree) {
    constexpr int reads = 1'000'000;
    BenchQueue queue;
    queue.fill(tree);
    const auto start = Clock::now();
    for (int i = 0; i < reads; ++i) {
        benchmark::DoNotOptimize(queue->pendingCount());
        benchmark::DoNotOptimize(queue->hasFinished());
        benchmark::ClobberMemory();
    }
    state.counters[readTime] = secondsSince(start).count() * nano / reads;
}

using Measurement = void (*)(benchmark::State& state, const FileTree& tree);

void registerMeasurement(const char* name, Measurement measure, const FileTree& tree) {
    const auto once = [measure, &tree](benchmark::State& state) {
        for ([[maybe_unused]] auto turn : state)
            measure(state, tree);
    };
    benchmark::RegisterBenchmark(name, once)->Arg(tree.fileCount())->Iterations(1)->Repetitions(3);
}

void registerAll(const FileTree& tree) {
    registerMeasurement("add", adds, tree);
    registerMeasurement("run", runs, tree);
    registerMeasurement("clear all", clearsAll, tree);
    registerMeasurement("clear every second", clearsHalf, tree);
    registerMeasurement("remove", removesSingleOnes, tree);
    registerMeasurement("read", readsCounts, tree);
}

} // namespace
} // namespace boxlift::bench

int main(int argc, char** argv) {
    using namespace boxlift::bench;
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    std::vector<std::unique_ptr<FileTree>> trees;
    for (const int fileCount : jobCounts) {
        trees.push_back(std::make_unique<FileTree>(fileCount));
        registerAll(*trees.back());
    }
    ScaleTable table(rows);
    benchmark::RunSpecifiedBenchmarks(&table);
    return table.hasErrors() ? 1 : 0;
}
