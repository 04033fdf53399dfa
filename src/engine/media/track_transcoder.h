#pragma once

#include <functional>

#include "engine/media/av/ffmpeg.h"

namespace boxlift::media {

/// One track's way from compressed to compressed. One thread. All but the destructor throw
/// media::Error.
class TrackTranscoder {
public:
    /// Takes over the packet's reference; time stamps are in timeBase().
    using Sink = std::function<void(AVPacket&)>;

    virtual ~TrackTranscoder() = default;

    /// Fills in the output stream's codec parameters and time base; before the header.
    virtual void describe(AVStream& to) const = 0;
    virtual AVRational timeBase() const = 0;
    /// Takes the next compressed packet of the source stream.
    virtual void push(const AVPacket& packet, const Sink& sink) = 0;
    /// No more packets come: gives out what is left.
    virtual void finish(const Sink& sink) = 0;
};

} // namespace boxlift::media
