#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>

#include "engine/media/audio_channel_layout.h"
#include "engine/media/av/handles.h"

namespace boxlift::media {

/// How the samples of decoded audio are laid out.
struct AudioFormat {
    int sampleRate = 0;            ///< Hz
    std::uint64_t channelMask = 0; ///< Speakers, as AV_CH_LAYOUT_...
    AVSampleFormat sampleFormat = AV_SAMPLE_FMT_FLT;
};

/// Turns decoded frames of any format, even one that changes on the way, into frames of one format.
/// The output begins where the input begins; it may come later than the input by the length of the
/// resampler's filter. Time stamps are not looked at. One thread.
class AudioConverter {
public:
    /// Takes over the frame.
    using Sink = std::function<void(av::FramePtr)>;

    /// `path` for error messages.
    AudioConverter(const AudioFormat& to, const std::filesystem::path& path)
        : m_to(to), m_path(path) {}

    /// Leaves out the first `skip` samples of the frame.
    void convert(const AVFrame& frame, int skip, const Sink& sink);
    /// Gives out what the filter holds; what comes next begins anew.
    void flush(const Sink& sink);

private:
    struct Source {
        int sampleRate = 0;
        int sampleFormat = AV_SAMPLE_FMT_NONE;
        ChannelLayout layout;
        friend bool operator==(const Source&, const Source&) = default;
    };

    void open(const Source& source);
    void setMatrix(const ChannelLayout& from);
    void pull(const std::uint8_t** input, int count, const Sink& sink);
    void flushShort(const Sink& sink);

    AudioFormat m_to;
    std::filesystem::path m_path;
    Source m_source;
    av::SwrPtr m_resampler;
    /// Samples that went into the resampler and that came out.
    std::int64_t m_taken = 0;
    std::int64_t m_given = 0;
};

} // namespace boxlift::media
