#pragma once

#include <utility>

#include "engine/media/av/handles.h"
#include "engine/media/sample_runs.h"

namespace boxlift::media {

/// Puts the packets of one stream together, so that the container's writer takes many for one. It
/// keeps more than fifty bytes for each until the file ends, and ten hours of sound are more than a
/// million packets; here four bytes are kept. For streams whose packets come in order, all with
/// time stamps, and can each be decoded by itself. One thread.
class SampleGatherer {
public:
    /// Takes over the packet's reference. The run before it when a new one begins with it, else
    /// null.
    av::PacketPtr add(AVPacket& packet);
    /// What has been gathered since, null when nothing.
    av::PacketPtr take();
    /// All runs that have been given out. The last act.
    SampleRuns takeSamples() { return std::move(m_samples); }

private:
    bool continues(const AVPacket& packet) const;
    void begin(AVPacket& packet);
    void append(const AVPacket& packet);

    av::PacketPtr m_gathered;
    /// Of the last packet, in the stream's time base.
    std::int64_t m_lastDuration = 0;
    SampleRuns m_samples;
};

} // namespace boxlift::media
