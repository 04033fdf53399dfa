#pragma once

#include <memory>
#include <mutex>
#include <stop_token>
#include <vector>

#include "engine/media/asset_reader.h"
#include "engine/media/audio_track_decoder.h"
#include "engine/media/selection.h"

namespace boxlift::media {

/// Reads the audio of one file: each track is decoded by itself, the mix is made in floating point
/// and clipped once.
class AudioMixReader : public AssetReader {
public:
    explicit AudioMixReader(std::shared_ptr<const Asset> asset);

    bool canAddAudioMix(std::span<const std::shared_ptr<const AssetTrack>> tracks,
                        const LinearPcmSettings& settings) const override;
    void addAudioMix(std::span<const std::shared_ptr<const AssetTrack>> tracks,
                     const LinearPcmSettings& settings) override;
    bool startReading() override;
    std::optional<SampleBuffer> copyNextSampleBuffer() override;
    void cancelReading() override;

    Status status() const override;
    std::exception_ptr error() const override;

private:
    void openTracks();
    std::size_t mix();
    /// Tracks that hold nothing make no file.
    void requireSound() const;
    SampleBuffer takeBuffer(std::size_t count);
    void end(Status status, std::exception_ptr error);
    void endWithCurrentException();

    std::optional<Selection> m_selection;
    LinearPcmSettings m_settings;
    std::vector<int> m_streams;

    // The reading thread.
    std::vector<std::unique_ptr<AudioTrackDecoder>> m_tracks;
    std::vector<float> m_sum;
    std::vector<float> m_track;
    std::int64_t m_position = 0; ///< Samples per channel.

    // Any thread.
    std::stop_source m_stop;
    mutable std::mutex m_mutex;
    Status m_status = Status::unknown;
    std::exception_ptr m_error;
};

} // namespace boxlift::media
