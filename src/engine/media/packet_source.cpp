#include "engine/media/packet_source.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "engine/media/av/conversion.h"

namespace boxlift::media {

namespace {

/// A broadcast stream's clock may start anew; a pause of this length is no pause.
constexpr double jumpForward = 10;
constexpr double jumpBack = 1;

bool mayJump(const AVFormatContext& context) {
    return (context.iformat->flags & AVFMT_TS_DISCONT) != 0;
}

} // namespace

PacketSource::PacketSource(const Selection& selection, std::stop_token stop)
    : m_demuxer(av::Demuxer::open(selection.file, av::ProbeDepth::streams, stop)) {
    AVFormatContext& context = m_demuxer->context();
    m_states.resize(context.nb_streams);
    // The demuxer discards the track that it has read the chapters from.
    for (const AVStream* stream : std::span(context.streams, context.nb_streams))
        if (stream->discard == AVDISCARD_ALL)
            m_chapterTexts.insert(stream->index);
    for (const int index : selection.streams)
        m_states[static_cast<std::size_t>(index)].isTaken = true;
    readTimeline(selection, stop);
    for (AVStream* stream : std::span(context.streams, context.nb_streams))
        if (!m_states[static_cast<std::size_t>(stream->index)].isTaken)
            stream->discard = AVDISCARD_ALL;
}

void PacketSource::readTimeline(const Selection& selection, std::stop_token stop) {
    if (!m_demuxer->isMovie()) {
        const Timeline timeline = Timeline::of(*m_demuxer, stop);
        take(timeline, m_demuxer->context());
        const Time start = av::toTime(m_demuxer->context().start_time, AV_TIME_BASE_Q);
        m_start = start.isValid() ? start : Time::zero();
        return;
    }
    // Reading the timeline of a fragmented movie spends the demuxer.
    const auto other = av::Demuxer::open(selection.file, av::ProbeDepth::header, stop);
    const Timeline timeline = Timeline::of(*other, stop);
    take(timeline, other->context());
    m_start = movieStart();
}

void PacketSource::take(const Timeline& timeline, const AVFormatContext& context) {
    for (const AVStream* stream : std::span(context.streams, context.nb_streams)) {
        m_ranges.push_back(timeline.range(*stream));
        if (timeline.isSpliced(*stream))
            m_spliced.push_back(stream->index);
    }
    m_ranges.resize(m_states.size());
    m_duration = timeline.duration();
    m_isDeclared = timeline.isDeclared();
}

Time PacketSource::movieStart() const {
    // The movie's zero is ours, late tracks and all; but a piece of a longer recording, whose
    // stamps all begin late without an edit that says so, is moved to zero.
    Time start;
    for (const AVStream* stream : std::span(context().streams, context().nb_streams)) {
        const AVMediaType type = stream->codecpar->codec_type;
        if (av::isPicture(*stream) || (type != AVMEDIA_TYPE_VIDEO && type != AVMEDIA_TYPE_AUDIO))
            continue;
        const Time first = av::toTime(stream->start_time, stream->time_base);
        const Time late = first - range(stream->index).start;
        if (late.isValid() && (!start.isValid() || late < start))
            start = late;
    }
    return start.isValid() ? std::max(Time::zero(), start) : Time::zero();
}

bool PacketSource::isSpliced(int stream) const {
    return std::find(m_spliced.begin(), m_spliced.end(), stream) != m_spliced.end();
}

std::vector<int> PacketSource::otherStreams() const {
    std::vector<int> streams;
    for (const AVStream* stream : std::span(context().streams, context().nb_streams)) {
        const AVMediaType type = stream->codecpar->codec_type;
        const bool isMain = type == AVMEDIA_TYPE_VIDEO || type == AVMEDIA_TYPE_AUDIO;
        if (!isMain && !m_chapterTexts.contains(stream->index))
            streams.push_back(stream->index);
    }
    return streams;
}

void PacketSource::select(int stream) {
    m_states[static_cast<std::size_t>(stream)].isTaken = true;
    m_demuxer->context().streams[stream]->discard = AVDISCARD_DEFAULT;
}

void PacketSource::ignore(int stream) {
    m_states[static_cast<std::size_t>(stream)].isTaken = false;
    m_demuxer->context().streams[stream]->discard = AVDISCARD_ALL;
}

bool PacketSource::next(AVPacket& packet) {
    while (m_demuxer->read(packet)) {
        const auto index = static_cast<std::size_t>(packet.stream_index);
        // Streams that turn up in mid-file were in no plan.
        if (index < m_states.size() && m_states[index].isTaken) {
            shift(packet);
            if (mayJump(context()))
                closeJumps(packet, m_states[index]);
            return true;
        }
        av_packet_unref(&packet);
    }
    return false;
}

void PacketSource::shift(AVPacket& packet) const {
    const AVRational timeBase = stream(packet.stream_index).time_base;
    const std::int64_t offset = av::toTimestamp(m_jump - m_start, timeBase);
    if (packet.pts != AV_NOPTS_VALUE)
        packet.pts += offset;
    if (packet.dts != AV_NOPTS_VALUE)
        packet.dts += offset;
}

void PacketSource::closeJumps(AVPacket& packet, StreamState& state) {
    const AVStream& source = stream(packet.stream_index);
    const AVMediaType type = source.codecpar->codec_type;
    const Time decoded = av::toTime(packet.dts, source.time_base);
    if (!decoded.isValid() || (type != AVMEDIA_TYPE_VIDEO && type != AVMEDIA_TYPE_AUDIO))
        return;
    Time correction = Time::zero();
    if (state.expected.isValid()) {
        const double gap = (decoded - state.expected).seconds();
        if (gap > jumpForward || gap < -jumpBack)
            correction = state.expected - decoded;
    }
    const std::int64_t offset = av::toTimestamp(correction, source.time_base);
    packet.dts += offset;
    if (packet.pts != AV_NOPTS_VALUE)
        packet.pts += offset;
    m_jump = m_jump + correction;
    state.expected = decoded + correction + av::toTime(packet.duration, source.time_base);
}

double PacketSource::fraction(const AVPacket& packet) const {
    if (m_isDeclared && m_duration.isValid() && m_duration > Time::zero()) {
        const std::int64_t stamp = packet.dts != AV_NOPTS_VALUE ? packet.dts : packet.pts;
        const Time time = av::toTime(stamp, stream(packet.stream_index).time_base);
        return time.isValid() ? time.seconds() / m_duration.seconds() : 0;
    }
    const auto size = static_cast<double>(m_demuxer->file()->size());
    return packet.pos > 0 && size > 0 ? static_cast<double>(packet.pos) / size : 0;
}

} // namespace boxlift::media
