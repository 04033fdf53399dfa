#pragma once

#include "bench/file_tree.h"
#include "bench/timed_turns.h"
#include "drive/memory_preferences.h"
#include "drive/no_chooser.h"
#include "queue/queue.h"

namespace boxlift::bench {

/// A queue over an engine that answers at once, with an outside world in memory, so that what
/// costs is the queue alone. Main thread.
class BenchQueue {
public:
    BenchQueue();

    Queue& operator*() { return m_queue; }
    Queue* operator->() { return &m_queue; }
    TimedTurns& turns() { return m_turns; }
    int count() { return m_queue.jobList()->count(); }
    Job& job(int row) { return *m_queue.jobs().at(static_cast<std::size_t>(row)); }

    void waitForAnalyses();
    void convertAll();
    /// All files of the tree, analysed.
    void fill(const FileTree& tree);

private:
    drive::NoChooser m_chooser;
    drive::MemoryPreferences m_preferences;
    Queue m_queue;
    TimedTurns m_turns;
};

} // namespace boxlift::bench
