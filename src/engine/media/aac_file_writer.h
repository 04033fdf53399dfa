#pragma once

#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>

#include "engine/media/asset_writer.h"
#include "engine/media/audio_encoder.h"
#include "engine/media/bounded_queue.h"
#include "engine/media/input_file.h"
#include "engine/media/muxer.h"

namespace boxlift::media {

/// Writes an M4A file with one AAC-LC track, encoding on a thread of its own.
class AacFileWriter : public AssetWriter {
public:
    explicit AacFileWriter(const std::filesystem::path& path);
    ~AacFileWriter() override;

    bool canAddAudioInput(const AacSettings& settings) const override;
    void addAudioInput(const AacSettings& settings) override;
    void copyMetadata(const Asset& source) override;
    bool startWriting() override;
    void startSession(Time atSourceTime) override;
    bool isReadyForMoreMediaData() const override;
    bool waitUntilReadyForMoreMediaData(std::chrono::milliseconds timeout) override;
    bool append(SampleBuffer buffer) override;
    void markAsFinished() override;
    void finishWriting() override;
    void cancelWriting() override;

    Status status() const override;
    std::exception_ptr error() const override;

private:
    void open();
    void copyFileMetadata();
    bool beginFinishing();
    void publish();
    void encodeAll();
    void encode(const SampleBuffer& buffer);
    AudioEncoder::Sink muxPackets();
    void end(Status status, std::exception_ptr error);
    void endWithCurrentException();

    std::filesystem::path m_path;
    std::optional<AacSettings> m_settings;
    std::shared_ptr<const InputFile> m_metadataSource;

    // The encoding thread while it runs, the caller's before and after.
    std::unique_ptr<Muxer> m_muxer;
    std::unique_ptr<AudioEncoder> m_encoder;
    int m_streamIndex = 0;
    bool m_hasSamples = false;
    Time m_sessionStart = Time::zero();

    // Any thread.
    BoundedQueue<SampleBuffer> m_buffers;
    std::stop_source m_stop;
    mutable std::mutex m_mutex;
    Status m_status = Status::unknown;
    bool m_isFinishing = false;
    std::exception_ptr m_error;

    std::thread m_thread;
};

} // namespace boxlift::media
