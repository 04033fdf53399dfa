#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>

#include "engine/media/av/handles.h"
#include "engine/media/time.h"

namespace boxlift::media {

/// Decodes one audio stream, and lives with damage: a packet that cannot be decoded is left out.
/// When no packet could be decoded, or more packets could not than could, the stream counts as not
/// decodable. Priming and padding that the container marks are removed. One thread. Throws
/// media::Error.
class AudioDecoder {
public:
    /// Takes a decoded frame and its time, in the packets' clock; invalid when it is not known.
    using Sink = std::function<void(const AVFrame&, Time)>;

    /// `path` for error messages.
    AudioDecoder(const AVStream& stream, const std::filesystem::path& path);

    void push(const AVPacket& packet, const Sink& sink);
    /// No more packets come: gives out what is left.
    void finish(const Sink& sink);

private:
    int send(const AVPacket* packet);
    void receive(const Sink& sink);
    void noteDamage(int code);

    std::filesystem::path m_path;
    AVRational m_timeBase;
    av::CodecContextPtr m_context;
    av::FramePtr m_frame;
    std::int64_t m_goodPackets = 0;
    std::int64_t m_damagedPackets = 0;
    int m_firstDamage = 0;
};

} // namespace boxlift::media
