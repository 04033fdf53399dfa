#pragma once

#include <cstdint>

#include "engine/media/track_transcoder.h"

namespace boxlift::media {

/// A track of timed text that goes over as it is.
class TextCopyTrack : public TrackTranscoder {
public:
    explicit TextCopyTrack(const AVStream& source) : m_source(source) {}

    void describe(AVStream& to) const override;
    AVRational timeBase() const override { return m_source.time_base; }
    void push(const AVPacket& packet, const Sink& sink) override;
    void finish(const Sink&) override {}

private:
    const AVStream& m_source;
    std::int64_t m_last = AV_NOPTS_VALUE;
};

} // namespace boxlift::media
