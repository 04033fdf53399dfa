#pragma once

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <optional>
#include <vector>

#include "engine/media/asset_writer.h"
#include "fakes/event_log.h"
#include "fakes/hook.h"
#include "model/file_type.h"

namespace boxlift::fakes {

/// How writing goes.
struct WriterScript {
    std::exception_ptr makeError;
    bool takesInput = true;
    bool starts = true;
    bool takesBuffers = true;
    /// Waits that time out before the input is ready.
    int busyWaits = 0;
    /// Finishing goes on until it is cancelled.
    bool finishesOnlyWhenCancelled = false;
    media::AssetWriter::Status endStatus = media::AssetWriter::Status::completed;
    std::exception_ptr error;
    /// How far encoding has come, each time that it is asked for; empty where it does not tell.
    std::vector<media::Time> encoded;
    /// Waits that time out before all is encoded.
    int encodingWaits = 0;
    Hook onEncodingWait;
    Hook onWait;
    Hook onMarkAsFinished;
    Hook onFinish;
    /// The status is the final one already.
    Hook onFinished;
};

/// How writing was asked for.
struct WriterRecord {
    std::filesystem::path path;
    FileType type{};
    media::AacSettings askedSettings;
    media::AacSettings settings;
    const media::Asset* metadataSource = nullptr;
    media::Time durationHint;
    media::Time sessionStart;
    std::vector<media::Time> appended;
    std::vector<std::chrono::milliseconds> timeouts;
};

/// A writer that follows a script.
class FakeAssetWriter : public media::AssetWriter {
public:
    FakeAssetWriter(WriterScript script, WriterRecord& record, EventLog& events)
        : m_script(std::move(script)), m_record(record), m_events(events) {}

    bool canAddAudioInput(const media::AacSettings& settings) const override {
        m_record.askedSettings = settings;
        return m_script.takesInput;
    }
    void addAudioInput(const media::AacSettings& settings) override {
        m_events.add("add input");
        m_record.settings = settings;
    }
    void copyMetadata(const media::Asset& source) override {
        m_events.add("copy metadata");
        m_record.metadataSource = &source;
    }
    void setOverallDurationHint(media::Time duration) override { m_record.durationHint = duration; }
    bool startWriting() override {
        m_events.add("start writing");
        return m_script.starts;
    }
    void startSession(media::Time atSourceTime) override {
        m_events.add("start session");
        m_record.sessionStart = atSourceTime;
    }

    bool isReadyForMoreMediaData() const override { return m_script.busyWaits <= 0; }
    bool waitUntilReadyForMoreMediaData(std::chrono::milliseconds timeout) override {
        m_record.timeouts.push_back(timeout);
        call(m_script.onWait);
        return m_script.busyWaits-- <= 0;
    }
    bool append(media::SampleBuffer buffer) override {
        m_events.add("append");
        m_record.appended.push_back(buffer.presentationTimeStamp);
        return m_script.takesBuffers;
    }
    void markAsFinished() override {
        m_events.add("mark as finished");
        call(m_script.onMarkAsFinished);
    }
    std::optional<media::Time> encodedTime() const override {
        if (m_asked == m_script.encoded.size())
            return std::nullopt;
        return m_script.encoded[m_asked++];
    }
    bool waitUntilEncoded(std::chrono::milliseconds) override {
        call(m_script.onEncodingWait);
        return m_script.encodingWaits-- <= 0;
    }

    void finishWriting() override {
        m_events.add("finish writing");
        call(m_script.onFinish);
        end();
        call(m_script.onFinished);
    }
    void cancelWriting() override {
        m_events.add("cancel writing");
        const std::lock_guard lock(m_mutex);
        if (m_status != Status::completed)
            m_status = Status::cancelled;
        m_changed.notify_all();
    }
    Status status() const override {
        const std::lock_guard lock(m_mutex);
        return m_status;
    }
    std::exception_ptr error() const override { return m_script.error; }

private:
    void end() {
        std::unique_lock lock(m_mutex);
        const auto isCancelled = [this] { return m_status == Status::cancelled; };
        if (m_script.finishesOnlyWhenCancelled)
            m_changed.wait_for(lock, std::chrono::seconds(5), isCancelled);
        if (!isCancelled())
            m_status = m_script.endStatus;
    }

    WriterScript m_script;
    WriterRecord& m_record;
    EventLog& m_events;
    mutable std::size_t m_asked = 0;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    Status m_status = Status::writing;
};

} // namespace boxlift::fakes
