#pragma once

#include <filesystem>
#include <functional>

#include "engine/media/av/handles.h"

namespace boxlift::media {

/// Decodes one track of pictures. What is damaged is skipped; a track of which nothing at all can
/// be decoded is an error. One thread (the decoder has more of its own). Throws media::Error.
class VideoDecoder {
public:
    /// Takes over the frame's reference. Its `pts` is the best stamp that there is, in the source
    /// stream's time base.
    using Sink = std::function<void(AVFrame&)>;

    VideoDecoder(const AVStream& source, const std::filesystem::path& path);

    void push(const AVPacket& packet, const Sink& sink);
    void finish(const Sink& sink);

private:
    void send(const AVPacket* packet, const Sink& sink);
    void receive(const Sink& sink);
    /// Remembers damage; anything worse throws.
    void skip(int code);

    std::filesystem::path m_path;
    av::CodecContextPtr m_context;
    av::FramePtr m_frame;
    /// Whether a packet has come whose picture is to be shown.
    bool m_isAwaited = false;
    bool m_hasDecoded = false;
    /// The last code of damage, 0 for none.
    int m_damage = 0;
};

} // namespace boxlift::media
