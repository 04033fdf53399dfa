#pragma once

#include <condition_variable>
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <string>

#include "model/media_info.h"
#include "queue/queue.h"
#include "support/fake_chooser.h"
#include "support/fake_engine.h"
#include "support/fake_preferences.h"
#include "support/gate.h"
#include "support/temp_folder.h"

namespace boxlift::test {

/// H.264 and AAC.
MediaInfo film();
/// MP3 alone.
MediaInfo song();
/// H.264 alone.
MediaInfo silentFilm();

/// A queue for the window to show, whose jobs are brought into the state that a test needs: the
/// engine behind it waits for the test's word. Main thread, but for what the engine calls.
class Stage {
public:
    Stage();
    /// Whoever waits goes on and ends.
    ~Stage();

    Queue& queue() { return m_queue; }
    std::filesystem::path path(const std::string& name) const { return m_folder.path() / name; }
    std::filesystem::path outputDir() const { return m_folder.path() / "out"; }

    /// A job whose analysis does not end.
    Job* addReading(const std::string& name);
    Job* addReady(const std::string& name, const MediaInfo& info = film());
    /// A job whose analysis fails.
    Job* addFailed(const std::string& name, const std::string& message);
    Job* addDone(const std::string& name, Mode mode, const MediaInfo& info = film());

    /// Starts the job's conversion, which then waits.
    void convert(Job* job);
    /// What the conversion that waits does next.
    void report(double progress);
    void finish(Mode mode);
    void fail(const std::string& message);

    /// Where analyses can be told what else to find.
    FakeEngine engine;
    /// The user who answers the panels.
    FakeChooser chooser;

private:
    using Outcome = std::function<Mode()>;

    Mode wait(const Converter::Progress& progress, const std::stop_token& stop);
    void conclude(Outcome outcome);
    Job* add(const std::string& name, FakeEngine::Analysis analysis);

    TempFolder m_folder;
    FakePreferences m_preferences;
    Gate m_never;
    std::mutex m_mutex;
    std::condition_variable_any m_changed;
    std::optional<double> m_report;
    Outcome m_outcome;
    Queue m_queue;
};

} // namespace boxlift::test
