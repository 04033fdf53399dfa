#include "engine/media/passthrough_track.h"

#include <algorithm>
#include <cstring>

#include "engine/media/av/conversion.h"
#include "engine/media/av/demuxer.h"
#include "engine/media/error.h"
#include "engine/media/source_check.h"

namespace boxlift::media {

namespace {

/// A step back in decoding order up to this is a slip of the writer's and mended; more is a break.
constexpr double smallSlip = 0.5;

bool isAudio(const AVStream& stream) {
    return stream.codecpar->codec_type == AVMEDIA_TYPE_AUDIO;
}

/// How long a packet lasts whose container does not say, in the stream's time base.
std::int64_t usualDuration(const AVStream& stream, int size) {
    const AVCodecParameters& parameters = *stream.codecpar;
    if (isAudio(stream) && parameters.sample_rate > 0)
        return av_rescale_q(av_get_audio_frame_duration2(stream.codecpar, size),
                            {1, parameters.sample_rate}, stream.time_base);
    const AVRational rate = stream.avg_frame_rate;
    return rate.num > 0 && rate.den > 0 ? av_rescale_q(1, av_inv_q(rate), stream.time_base) : 0;
}

} // namespace

PassthroughTrack::PassthroughTrack(const AVStream& source, int outputIndex,
                                   const std::filesystem::path& path)
    : m_source(source), m_outputIndex(outputIndex), m_path(path) {}

void PassthroughTrack::skipToKey() {
    m_awaitsKey = m_source.codecpar->codec_type == AVMEDIA_TYPE_VIDEO;
}

void PassthroughTrack::fail(const char* cause) const {
    throw Error(ErrorKind::unknown, "copy track", m_path, cause);
}

bool PassthroughTrack::prepare(AVPacket& packet, AVRational timeBase) {
    if (packet.size == 0 || (m_awaitsKey && !(packet.flags & AV_PKT_FLAG_KEY)))
        return false;
    m_awaitsKey = false;
    requireSameParameters(packet);
    const bool isLast = m_stretchesLast && isLastOfIndex(packet);
    completeStamps(packet);
    rescale(packet, timeBase);
    keepForward(packet, timeBase);
    cutPadding(packet, timeBase);
    const Time end = av::toTime(av_sat_add64(packet.pts, packet.duration), timeBase);
    m_end = std::max(m_end, end);
    if (isLast)
        stretch(packet, timeBase);
    packet.stream_index = m_outputIndex;
    packet.pos = -1;
    return true;
}

bool PassthroughTrack::isLastOfIndex(const AVPacket& packet) const {
    const AVIndexEntry* last =
        av::indexEntry(m_source, avformat_index_get_entries_count(&m_source) - 1);
    return last && packet.dts != AV_NOPTS_VALUE && packet.dts >= last->timestamp;
}

void PassthroughTrack::stretch(AVPacket& packet, AVRational timeBase) const {
    if (m_endLimit.isValid())
        packet.duration =
            std::max(packet.duration, av::toTimestamp(m_endLimit, timeBase) - packet.pts);
}

void PassthroughTrack::requireSameParameters(const AVPacket& packet) const {
    std::size_t size = 0;
    const std::uint8_t* data = av_packet_get_side_data(&packet, AV_PKT_DATA_NEW_EXTRADATA, &size);
    if (!data)
        return;
    const AVCodecParameters& parameters = *m_source.codecpar;
    const bool isSame = size == static_cast<std::size_t>(parameters.extradata_size) &&
                        std::memcmp(data, parameters.extradata, size) == 0;
    if (!isSame)
        fail("the decoder parameters change in the middle");
}

void PassthroughTrack::completeLastDuration(AVPacket& packet) const {
    // The demuxer lets the last packet end where the media ends, whose length does not know of the
    // gap before a late track.
    if (m_lateStart > 0 && packet.duration > 0 && packet.dts != AV_NOPTS_VALUE &&
        packet.dts + packet.duration == m_source.duration)
        packet.duration += m_lateStart;
}

void PassthroughTrack::completeStamps(AVPacket& packet) {
    completeLastDuration(packet);
    if (packet.duration <= 0)
        packet.duration = usualDuration(m_source, packet.size);
    // Sound and pictures in order follow one another; reordered pictures cannot be guessed.
    if (m_source.codecpar->video_delay <= 0) {
        if (packet.dts == AV_NOPTS_VALUE)
            packet.dts = packet.pts;
        if (packet.dts == AV_NOPTS_VALUE && isAudio(m_source))
            packet.dts = m_expected != AV_NOPTS_VALUE ? m_expected : 0;
        if (packet.pts == AV_NOPTS_VALUE)
            packet.pts = packet.dts;
    }
    if (packet.dts == AV_NOPTS_VALUE || packet.pts == AV_NOPTS_VALUE)
        fail("a packet has no time stamp");
    if (packet.duration <= 0)
        packet.duration = m_expected != AV_NOPTS_VALUE ? packet.dts - m_lastSourceDts : 0;
    m_lastSourceDts = packet.dts;
    m_expected = packet.dts + packet.duration;
    packet.dts -= m_decodingLead;
}

void PassthroughTrack::rescale(AVPacket& packet, AVRational timeBase) {
    const AVCodecParameters& parameters = *m_source.codecpar;
    const AVRational sampleBase{1, parameters.sample_rate};
    const int samples =
        isAudio(m_source) ? av_get_audio_frame_duration2(m_source.codecpar, packet.size) : 0;
    const bool isCoarse = isAudio(m_source) && samples > 0 && parameters.sample_rate > 0 &&
                          av_cmp_q(m_source.time_base, sampleBase) != 0;
    if (!isCoarse) {
        av_packet_rescale_ts(&packet, m_source.time_base, timeBase);
        return;
    }
    // Coarse stamps, rescaled one by one, would make every packet's length waver.
    packet.dts = packet.pts = av_rescale_delta(m_source.time_base, packet.dts, sampleBase, samples,
                                               &m_rescaleState, timeBase);
    packet.duration = av_rescale_q(samples, sampleBase, timeBase);
}

void PassthroughTrack::cutPadding(AVPacket& packet, AVRational timeBase) const {
    if (!isAudio(m_source) || !m_endLimit.isValid())
        return;
    const std::int64_t limit = av::toTimestamp(m_endLimit, timeBase);
    if (packet.pts < limit && packet.duration > limit - packet.pts)
        packet.duration = limit - packet.pts;
}

void PassthroughTrack::keepForward(AVPacket& packet, AVRational timeBase) {
    if (m_lastDts != AV_NOPTS_VALUE && packet.dts <= m_lastDts) {
        const double slip = static_cast<double>(m_lastDts - packet.dts) * av_q2d(timeBase);
        if (slip > smallSlip)
            fail("the time stamps jump back");
        packet.dts = m_lastDts + 1;
        packet.pts = std::max(packet.pts, packet.dts);
    }
    m_lastDts = packet.dts;
}

void PassthroughTrack::checkEnd(Time declaredEnd, bool isDeclared) const {
    const bool isDue = isDeclared && declaredEnd.isValid() && declaredEnd > Time::zero();
    if (!m_end.isValid() && isDue)
        throw Error(ErrorKind::sourceEndsEarly, "copy track", m_path, "a track has no media");
    if (isDeclared)
        checkDeclaredEnd(declaredEnd, m_end, m_path);
}

} // namespace boxlift::media
