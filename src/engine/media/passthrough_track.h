#pragma once

#include <cstdint>
#include <filesystem>

#include "engine/media/av/ffmpeg.h"
#include "engine/media/time.h"

namespace boxlift::media {

/// One track that is being copied: makes its packets fit for the output. One thread.
class PassthroughTrack {
public:
    PassthroughTrack(const AVStream& source, int outputIndex, const std::filesystem::path& path);

    /// Drops what comes before the first key frame: a recording of a broadcast begins anywhere.
    void skipToKey();
    /// Sound that goes on behind this is padding: the last packet is said to last no longer.
    void setEnd(Time end) { m_endLimit = end; }
    /// Lets the last packet of reordered pictures last until the end: nothing else tells its
    /// length, and the source's index is whole.
    void stretchLast() { m_stretchesLast = true; }
    /// Moves the decoding stamps back by so much, in the source's time base.
    void setDecodingLead(std::int64_t lead) { m_decodingLead = lead; }

    /// How late in the movie the track begins, in the source's time base.
    void setLateStart(std::int64_t gap) { m_lateStart = gap; }

    int outputIndex() const { return m_outputIndex; }

    /// Turns a packet of the source into one of the output, in `timeBase`; false when it is to be
    /// dropped. Throws media::Error when it cannot be copied: no time stamp, a jump back, other
    /// decoder parameters.
    bool prepare(AVPacket& packet, AVRational timeBase);

    /// Whether a packet has been copied.
    bool hasMedia() const { return m_end.isValid(); }
    /// Throws media::Error when the track has ended too early, or has not begun at all.
    void checkEnd(Time declaredEnd, bool isDeclared) const;

private:
    void requireSameParameters(const AVPacket& packet) const;
    void completeStamps(AVPacket& packet);
    void completeLastDuration(AVPacket& packet) const;
    void rescale(AVPacket& packet, AVRational timeBase);
    bool isLastOfIndex(const AVPacket& packet) const;
    void stretch(AVPacket& packet, AVRational timeBase) const;
    void cutPadding(AVPacket& packet, AVRational timeBase) const;
    void keepForward(AVPacket& packet, AVRational timeBase);
    [[noreturn]] void fail(const char* cause) const;

    const AVStream& m_source;
    int m_outputIndex;
    bool m_awaitsKey = false;
    bool m_stretchesLast = false;
    std::int64_t m_decodingLead = 0;
    std::int64_t m_lateStart = 0;
    // In the source's time base.
    std::int64_t m_expected = AV_NOPTS_VALUE;
    std::int64_t m_lastSourceDts = AV_NOPTS_VALUE;
    const std::filesystem::path& m_path;
    std::int64_t m_rescaleState = AV_NOPTS_VALUE;
    std::int64_t m_lastDts = AV_NOPTS_VALUE;
    Time m_end;
    Time m_endLimit;
};

} // namespace boxlift::media
