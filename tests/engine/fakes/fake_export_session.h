#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

#include "engine/media/export_session.h"
#include "fakes/event_log.h"
#include "fakes/hook.h"

namespace boxlift::fakes {

/// How an export goes.
struct SessionScript {
    bool presetFits = true;
    std::vector<FileType> types{FileType::AVFileTypeMPEG4, FileType::AVFileTypeQuickTimeMovie,
                                FileType::AVFileTypeAppleM4A};
    /// Delivered one at each reading, the last one from then on.
    std::vector<float> fractions{0.0F};
    /// Waits that time out before the one that sees the end.
    int waits = 0;
    /// Ends, as cancelled, when it is cancelled and not before.
    bool endsOnlyWhenCancelled = false;
    media::ExportSession::Status endStatus = media::ExportSession::Status::completed;
    std::exception_ptr error;
    Hook onConfigure;
    Hook onStart;
    Hook onWait;
    /// The status is the final one already.
    Hook onEnd;
};

/// How an export was asked for.
struct SessionRecord {
    std::shared_ptr<const media::Asset> asset;
    ExportPreset preset{};
    std::filesystem::path url;
    FileType type{};
    bool optimize = false;
    std::vector<std::chrono::milliseconds> timeouts;
};

/// An export session that follows a script. It has no thread: it ends inside a wait.
class FakeExportSession : public media::ExportSession {
public:
    FakeExportSession(SessionScript script, SessionRecord& record, EventLog& events)
        : m_script(std::move(script)), m_record(record), m_events(events) {}

    std::vector<FileType> supportedFileTypes() const override { return m_script.types; }
    void setOutputUrl(const std::filesystem::path& path) override {
        m_record.url = path;
        call(m_script.onConfigure);
    }
    void setOutputFileType(FileType type) override { m_record.type = type; }
    void setShouldOptimizeForNetworkUse(bool optimize) override { m_record.optimize = optimize; }
    void exportAsynchronously() override {
        m_events.add("start export");
        call(m_script.onStart);
    }

    bool waitUntilFinished(std::chrono::milliseconds timeout) override {
        m_record.timeouts.push_back(timeout);
        call(m_script.onWait);
        if (!ends(timeout))
            return false;
        call(m_script.onEnd);
        return true;
    }

    float progress() const override {
        const std::lock_guard lock(m_mutex);
        const std::size_t last = m_script.fractions.size() - 1;
        return m_script.fractions[std::min(m_readings++, last)];
    }
    Status status() const override {
        const std::lock_guard lock(m_mutex);
        return m_status;
    }
    std::exception_ptr error() const override { return m_script.error; }
    void cancelExport() override {
        m_events.add("cancel export");
        const std::lock_guard lock(m_mutex);
        m_isCancelled = true;
        m_changed.notify_all();
    }

private:
    bool ends(std::chrono::milliseconds timeout) {
        std::unique_lock lock(m_mutex);
        if (m_script.endsOnlyWhenCancelled) {
            m_changed.wait_for(lock, timeout, [this] { return m_isCancelled; });
            m_status = m_isCancelled ? Status::cancelled : Status::exporting;
            return m_isCancelled;
        }
        if (m_script.waits-- > 0)
            return false;
        m_status = m_script.endStatus;
        return true;
    }

    SessionScript m_script;
    SessionRecord& m_record;
    EventLog& m_events;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    mutable std::size_t m_readings = 0;
    bool m_isCancelled = false;
    Status m_status = Status::unknown;
};

} // namespace boxlift::fakes
