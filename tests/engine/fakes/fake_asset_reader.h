#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <vector>

#include "engine/media/asset_reader.h"
#include "fakes/event_log.h"
#include "fakes/hook.h"

namespace boxlift::fakes {

/// How reading goes.
struct ReaderScript {
    std::exception_ptr makeError;
    bool takesMix = true;
    bool starts = true;
    /// Time stamps of the buffers, which have four frames each.
    std::vector<media::Time> stamps;
    /// After its buffers it has another, but not before it is cancelled.
    bool hangsUntilCancelled = false;
    media::AssetReader::Status endStatus = media::AssetReader::Status::completed;
    std::exception_ptr error;
    Hook onCopy;
};

/// How reading was asked for.
struct ReaderRecord {
    std::shared_ptr<const media::Asset> asset;
    std::vector<std::shared_ptr<const media::AssetTrack>> askedTracks;
    std::vector<std::shared_ptr<const media::AssetTrack>> tracks;
    media::LinearPcmSettings askedSettings;
    media::LinearPcmSettings settings;
};

/// A reader that follows a script.
class FakeAssetReader : public media::AssetReader {
public:
    FakeAssetReader(ReaderScript script, ReaderRecord& record, EventLog& events)
        : m_script(std::move(script)), m_record(record), m_events(events) {}

    bool canAddAudioMix(std::span<const std::shared_ptr<const media::AssetTrack>> tracks,
                        const media::LinearPcmSettings& settings) const override {
        m_record.askedTracks.assign(tracks.begin(), tracks.end());
        m_record.askedSettings = settings;
        return m_script.takesMix;
    }
    void addAudioMix(std::span<const std::shared_ptr<const media::AssetTrack>> tracks,
                     const media::LinearPcmSettings& settings) override {
        m_events.add("add mix");
        m_record.tracks.assign(tracks.begin(), tracks.end());
        m_record.settings = settings;
    }
    bool startReading() override {
        m_events.add("start reading");
        return m_script.starts;
    }

    std::optional<media::SampleBuffer> copyNextSampleBuffer() override {
        call(m_script.onCopy);
        std::unique_lock lock(m_mutex);
        const bool isAtEnd = m_next == m_script.stamps.size();
        if (isAtEnd && m_script.hangsUntilCancelled)
            m_changed.wait_for(lock, std::chrono::seconds(5), [this] { return isCancelled(); });
        if (isAtEnd && !isCancelled())
            m_status = m_script.endStatus;
        if (isAtEnd || isCancelled())
            return std::nullopt;
        return media::SampleBuffer{m_script.stamps[m_next++], 2, std::vector<std::int16_t>(8)};
    }

    void cancelReading() override {
        m_events.add("cancel reading");
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
    bool isCancelled() const { return m_status == Status::cancelled; }

    ReaderScript m_script;
    ReaderRecord& m_record;
    EventLog& m_events;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::size_t m_next = 0;
    Status m_status = Status::reading;
};

} // namespace boxlift::fakes
