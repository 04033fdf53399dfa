#include "bench/bench_queue.h"

#include "support/media_infos.h"

namespace boxlift::bench {

namespace {

namespace fs = std::filesystem;

Engine instantEngine() {
    return {
        .analyze = [](const fs::path&, std::stop_token) { return test::filmInfo(); },
        .convert = [](const fs::path&, const MediaInfo&, Target, SizeOption, bool, const fs::path&,
                      const Converter::Progress&, std::stop_token) { return Mode::boxlift; },
    };
}

} // namespace

BenchQueue::BenchQueue()
    : m_queue({.engine = instantEngine(),
               .chooser = m_chooser,
               .preferences = m_preferences,
               .folders = {.movies = {}, .home = fs::temp_directory_path()}}),
      m_turns(m_queue.mailbox()->descriptor()) {}

void BenchQueue::waitForAnalyses() {
    m_turns.until([this] { return m_queue.pendingCount() == count(); });
}

void BenchQueue::convertAll() {
    m_queue.startAll();
    m_turns.until([this] { return !m_queue.isRunning(); });
}

void BenchQueue::fill(const FileTree& tree) {
    m_queue.addPaths({tree.path()});
    waitForAnalyses();
}

} // namespace boxlift::bench
