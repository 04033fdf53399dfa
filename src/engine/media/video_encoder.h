#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>

#include "engine/media/av/handles.h"
#include "engine/media/encode_settings.h"
#include "engine/media/video_colour.h"

namespace boxlift::media {

/// Encodes one track of pictures: H.264, High profile, 8-bit 4:2:0, each picture with the time
/// stamp that it came with. One thread (the encoder has more of its own). Throws media::Error.
class VideoEncoder {
public:
    /// Takes over the packet's reference; time stamps are in timeBase().
    using Sink = std::function<void(AVPacket&)>;

    struct Input {
        AVRational timeBase{1, 1};
        /// Usual number of pictures per second; not positive when unknown.
        AVRational frameRate{0, 1};
        VideoColour colour;
        /// Where the last picture's time ends, in the time base, where that is known.
        std::int64_t end = AV_NOPTS_VALUE;
    };

    VideoEncoder(const EncodeSettings& settings, const Input& input,
                 const std::filesystem::path& path);

    /// Fills in the output stream's parameters, time base and rate; before the header.
    void describe(AVStream& to) const;
    AVRational timeBase() const { return m_context->time_base; }
    /// Takes a picture of the settings' size. Pictures that lie before zero or do not go forward in
    /// time are dropped.
    void push(AVFrame& frame, const Sink& sink);
    void finish(const Sink& sink);

private:
    /// False when the picture has no place in time.
    bool place(AVFrame& frame);
    std::int64_t durationOf(const AVFrame& frame) const;
    void markKey(AVFrame& frame);
    void send(const AVFrame* frame, const Sink& sink);
    int check(int result, const char* what) const;

    std::filesystem::path m_path;
    av::CodecContextPtr m_context;
    av::PacketPtr m_packet;
    std::int64_t m_usualDuration = 1;
    std::int64_t m_keyInterval = 0;
    std::int64_t m_end = AV_NOPTS_VALUE;
    std::int64_t m_last = AV_NOPTS_VALUE;
    std::int64_t m_lastDuration = 0;
    std::int64_t m_lastKey = AV_NOPTS_VALUE;
    /// Of the pictures in the encoder, by time stamp: how long each is shown.
    std::map<std::int64_t, std::int64_t> m_durations;
};

} // namespace boxlift::media
