#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <stop_token>
#include <thread>

#include "engine/media/export_session.h"
#include "engine/media/file_system.h"
#include "engine/media/selection.h"

namespace boxlift::media {

class Muxer;

/// The life of an export session, whatever it does with the tracks: settings, thread, status,
/// progress, cancellation. A subclass does the work in run(); its destructor calls join().
class FileExportSession : public ExportSession {
public:
    /// Before the start. `files` outlives the session.
    void setFileSystem(const FileSystem& files) { m_settings.output.files = &files; }
    void setOutputUrl(const std::filesystem::path& path) override { m_settings.output.path = path; }
    void setOutputFileType(FileType type) override { m_settings.type = type; }
    void setShouldOptimizeForNetworkUse(bool optimize) override { m_settings.optimize = optimize; }
    void exportAsynchronously() override;
    bool waitUntilFinished(std::chrono::milliseconds timeout) override;

    float progress() const override;
    Status status() const override;
    std::exception_ptr error() const override;
    void cancelExport() override;

protected:
    struct Settings {
        OutputPlace output;
        FileType type = FileType::AVFileTypeMPEG4;
        bool optimize = false;
    };

    /// A stop that `stop` asks for cancels the session, its making too.
    FileExportSession(Selection selection, std::stop_token stop)
        : m_selection(std::move(selection)), m_link(std::move(stop), Link{m_stop}) {}

    const Selection& selection() const { return m_selection; }
    /// Stopped by a cancellation.
    std::stop_token stopToken() const { return m_stop.get_token(); }
    /// Any thread. Values of 1 and more show as just below 1 until the session has completed; the
    /// progress never goes back.
    void setProgress(double fraction);
    /// Finishes a muxer; what is left of the progress comes from it.
    void finish(Muxer& muxer);
    /// Cancels and waits for the thread.
    void join();

private:
    struct Link {
        std::stop_source stop;
        void operator()() { stop.request_stop(); }
    };

    /// The session's thread. Returns when the output has been published; throws otherwise.
    virtual void run(const Settings& settings, std::stop_token stop) = 0;
    void work();
    void end(Status status, std::exception_ptr error);

    const Selection m_selection;
    Settings m_settings;
    std::stop_source m_stop;
    std::stop_callback<Link> m_link;
    std::atomic<float> m_progress = 0;

    mutable std::mutex m_mutex;
    std::condition_variable m_ended;
    Status m_status = Status::unknown;
    std::exception_ptr m_error;

    mutable std::mutex m_muxerMutex;
    const Muxer* m_finishing = nullptr;

    std::thread m_thread;
};

} // namespace boxlift::media
