#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>

#include "engine/media/audio_run.h"
#include "engine/media/av/handles.h"

namespace boxlift::media {

/// Encodes one run of audio as AAC-LC. Time stamps are samples from the timeline's zero; the
/// encoder's priming lies before the first. One thread. Throws media::Error.
class AudioEncoder {
public:
    struct Settings {
        int sampleRate = 0; ///< Hz, one of those that AAC has
        std::uint64_t channelMask = 0;
        std::int64_t bitRate = 0; ///< bit/s; brought down to what AAC allows
    };
    /// Takes over the packet's reference; time stamps are in timeBase().
    using Sink = std::function<void(AVPacket&)>;

    static constexpr AVSampleFormat sampleFormat = AV_SAMPLE_FMT_FLTP;

    static bool hasSampleRate(int sampleRate);
    /// The most bits per second that AAC-LC allows for this many channels.
    static std::int64_t highestBitRate(int sampleRate, int channels);

    /// `path` for error messages.
    AudioEncoder(const Settings& settings, const std::filesystem::path& path);

    /// Parameters for a stream; its time base too.
    void describe(AVStream& to) const;
    AVRational timeBase() const { return m_context->time_base; }

    /// Runs follow one another; the first may begin late. Frames are of `sampleFormat`.
    void push(const AudioRun& run, const Sink& sink);
    /// Gives out what is left. The last packet is as long as what it holds.
    void finish(const Sink& sink);

private:
    void add(const AVFrame& frame, std::int64_t count, const Sink& sink);
    void encode(int count, const Sink& sink);
    void send(const AVFrame* frame, const Sink& sink);
    av::FramePtr makeFrame(int count) const;

    std::filesystem::path m_path;
    av::CodecContextPtr m_context;
    av::PacketPtr m_packet;
    av::AudioFifoPtr m_fifo;
    av::FramePtr m_silence;
    bool m_hasBegun = false;
    std::int64_t m_position = 0; ///< Of the first sample that is not yet encoded.
};

} // namespace boxlift::media
