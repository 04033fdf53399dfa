#pragma once

#include <condition_variable>
#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "model/media_info.h"
#include "queue/file_chooser.h"
#include "queue/preferences.h"
#include "queue/queue.h"
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

    Queue& queue() { return *m_queue; }
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

    /// The user's answers to the panels, and how often these were opened.
    QList<QUrl> chosenFiles;
    std::optional<QUrl> chosenFolder;
    int filePanels = 0;
    int folderPanels = 0;

private:
    class Chooser;
    class Memory;
    using Outcome = std::function<Mode()>;

    MediaInfo analyze(const std::filesystem::path& path, const std::stop_token& stop);
    Mode wait(const Converter::Progress& progress, const std::stop_token& stop);
    void conclude(Outcome outcome);
    Job* add(const std::string& name, std::optional<std::function<MediaInfo()>> analysis);

    TempFolder m_folder;
    std::unique_ptr<FileChooser> m_chooser;
    std::unique_ptr<Preferences> m_preferences;
    std::mutex m_mutex;
    std::condition_variable_any m_changed;
    std::map<std::string, std::function<MediaInfo()>> m_analyses;
    std::optional<double> m_report;
    Outcome m_outcome;
    std::unique_ptr<Queue> m_queue;
};

} // namespace boxlift::test
