#pragma once

#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>

#include "engine/media/asset_writer.h"
#include "engine/media/file_system.h"
#include "engine/media/muxer.h"
#include "engine/media/stretched_encoder.h"

namespace boxlift::media {

/// Writes an M4A file with one AAC-LC track. Encodes on all cores what is long enough for that,
/// and writes on a thread of its own.
class AacFileWriter : public AssetWriter {
public:
    explicit AacFileWriter(const OutputPlace& output,
                           unsigned cores = std::thread::hardware_concurrency());
    ~AacFileWriter() override;

    bool canAddAudioInput(const AacSettings& settings) const override;
    void addAudioInput(const AacSettings& settings) override;
    void copyMetadata(const Asset& source) override;
    void setOverallDurationHint(Time duration) override;
    bool startWriting() override;
    void startSession(Time atSourceTime) override;
    bool isReadyForMoreMediaData() const override;
    bool waitUntilReadyForMoreMediaData(std::chrono::milliseconds timeout) override;
    bool append(SampleBuffer buffer) override;
    void markAsFinished() override;
    std::optional<Time> encodedTime() const override;
    bool waitUntilEncoded(std::chrono::milliseconds timeout) override;
    void finishWriting() override;
    void cancelWriting() override;

    Status status() const override;
    std::exception_ptr error() const override;

private:
    void open();
    void copyFileMetadata();
    bool beginFinishing();
    void publish();
    void muxAll();
    void mux(AVPacket& packet);
    void end(Status status, std::exception_ptr error);
    void endWithCurrentException();

    const OutputPlace m_output;
    const unsigned m_cores;
    std::optional<AacSettings> m_settings;
    std::shared_ptr<const InputFile> m_metadataSource;
    Time m_durationHint;
    Time m_sessionStart = Time::zero();

    // The writing thread while it runs, the caller's before and after.
    std::unique_ptr<Muxer> m_muxer;
    int m_streamIndex = 0;
    bool m_hasSamples = false;

    // Any thread; made, under the lock, before the others can know of it.
    std::unique_ptr<StretchedEncoder> m_encoder;

    // Any thread.
    std::stop_source m_stop;
    mutable std::mutex m_mutex;
    Status m_status = Status::unknown;
    bool m_isFinishing = false;
    std::exception_ptr m_error;

    std::thread m_thread;
};

} // namespace boxlift::media
