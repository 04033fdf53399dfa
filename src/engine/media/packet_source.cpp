#include "engine/media/packet_source.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "engine/media/av/conversion.h"
#include "engine/media/error.h"
#include "engine/media/index_trust.h"

namespace boxlift::media {

namespace {

/// A broadcast stream's clock may start anew; a pause of this length is no pause.
constexpr double jumpForward = 10;
constexpr double jumpBack = 1;
/// A packet that follows its stream's last one this closely does not belong behind a jump.
constexpr double closeBy = 0.25;

bool mayJump(const AVFormatContext& context) {
    return (context.iformat->flags & AVFMT_TS_DISCONT) != 0;
}

} // namespace

PacketSource::PacketSource(const Selection& selection, std::stop_token stop)
    : m_demuxer(av::Demuxer::open(selection.file, av::ProbeDepth::streams, stop)) {
    AVFormatContext& context = m_demuxer->context();
    m_demuxer->file()->expectSequentialReading();
    m_states.resize(context.nb_streams);
    // The file may have been written anew since its streams were counted.
    const auto isGone = [&](int index) {
        return static_cast<std::size_t>(index) >= m_states.size();
    };
    if (std::any_of(selection.streams.begin(), selection.streams.end(), isGone))
        throw Error(ErrorKind::sourceUnreadable, "open source", path(), "it has fewer streams now");
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
        m_start = timeline.fileStart();
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
        m_shownEnds.push_back(timeline.shownEnd(*stream));
        if (timeline.isSpliced(*stream))
            m_spliced.push_back(stream->index);
        if (timeline.hasPartialKeys(*stream))
            m_partialKeys.insert(stream->index);
    }
    m_ranges.resize(m_states.size());
    m_shownEnds.resize(m_states.size());
    m_isIndexed = timeline.isIndexed();
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

std::vector<int> PacketSource::takenStreams() const {
    std::vector<int> streams;
    for (const AVStream* stream : std::span(context().streams, context().nb_streams))
        if (m_states[static_cast<std::size_t>(stream->index)].isTaken)
            streams.push_back(stream->index);
    return streams;
}

std::unique_ptr<av::Demuxer> PacketSource::openUnparsed(std::stop_token stop) const {
    try {
        return av::Demuxer::open(m_demuxer->file(), av::ProbeDepth::index, std::move(stop));
    } catch (const Error&) {
        // It only saves time: the one that is open can do without.
        return nullptr;
    }
}

bool PacketSource::isReadAlike(const AVFormatContext& other) const {
    const auto isAlike = [&](int index) {
        const AVStream& one = stream(index);
        const AVStream& another = *other.streams[index];
        return one.codecpar->codec_id == another.codecpar->codec_id &&
               av_cmp_q(one.time_base, another.time_base) == 0 &&
               avformat_index_get_entries_count(&one) == avformat_index_get_entries_count(&another);
    };
    return other.nb_streams == context().nb_streams && std::ranges::all_of(takenStreams(), isAlike);
}

bool PacketSource::trustIndex(std::stop_token stop) {
    const std::vector<int> taken = takenStreams();
    const auto isPartial = [this](int index) { return m_partialKeys.contains(index); };
    if (!m_isIndexed || std::ranges::any_of(taken, isPartial) ||
        !indexSparesParsing(context(), taken))
        return false;
    // In the one that is open, probing has made the parsers already and has read samples.
    auto reader = openUnparsed(std::move(stop));
    if (!reader || !isReadAlike(reader->context()))
        return false;
    for (AVStream* other : std::span(reader->context().streams, context().nb_streams)) {
        const AVStream& probed = stream(other->index);
        other->discard = probed.discard;
        // Pictures that are shown in another order have no length of their own: the library makes
        // it of the frame rate, which probing has found.
        other->r_frame_rate = probed.r_frame_rate;
    }
    m_demuxer->dropPackets();
    m_reader = std::move(reader);
    return true;
}

bool PacketSource::next(AVPacket& packet) {
    av::Demuxer& reader = m_reader ? *m_reader : *m_demuxer;
    while (reader.read(packet)) {
        const auto index = static_cast<std::size_t>(packet.stream_index);
        // Streams that turn up in mid-file were in no plan.
        if (index < m_states.size() && m_states[index].isTaken) {
            if (mayJump(context()))
                closeJumps(packet, m_states[index]);
            shift(packet, m_states[index].jump);
            return true;
        }
        av_packet_unref(&packet);
    }
    return false;
}

void PacketSource::shift(AVPacket& packet, Time jump) const {
    const AVRational timeBase = stream(packet.stream_index).time_base;
    const std::int64_t offset = av::toTimestamp(jump - m_start, timeBase);
    if (packet.pts != AV_NOPTS_VALUE)
        packet.pts = av_sat_add64(packet.pts, offset);
    if (packet.dts != AV_NOPTS_VALUE)
        packet.dts = av_sat_add64(packet.dts, offset);
}

void PacketSource::closeJumps(const AVPacket& packet, StreamState& state) {
    const AVStream& source = stream(packet.stream_index);
    const AVMediaType type = source.codecpar->codec_type;
    const Time decoded = av::toTime(packet.dts, source.time_base) - m_start;
    if (!decoded.isValid() || (type != AVMEDIA_TYPE_VIDEO && type != AVMEDIA_TYPE_AUDIO))
        return;
    const auto gap = [&](Time jump) { return (decoded + jump - state.expected).seconds(); };
    const bool isFirst = !state.expected.isValid();
    // One stream's last packets from before a jump may come after another's first from behind it.
    if (isFirst || std::abs(gap(state.jump)) > closeBy) {
        if (!isFirst && (gap(m_jump) > jumpForward || gap(m_jump) < -jumpBack))
            m_jump = state.expected - decoded;
        state.jump = m_jump;
    }
    state.expected = decoded + state.jump + av::toTime(packet.duration, source.time_base);
}

double PacketSource::fraction(const AVPacket& packet) const {
    if (m_isDeclared && m_duration.isValid() && m_duration > Time::zero()) {
        const std::int64_t stamp = packet.dts != AV_NOPTS_VALUE ? packet.dts : packet.pts;
        const Time time = av::toTime(stamp, stream(packet.stream_index).time_base);
        // Decoding may begin before the file's zero, and end behind what the edits show.
        return time.isValid() ? std::clamp(time.seconds() / m_duration.seconds(), 0.0, 1.0) : 0;
    }
    const auto size = static_cast<double>(fileSize());
    return packet.pos > 0 && size > 0 ? static_cast<double>(packet.pos) / size : 0;
}

} // namespace boxlift::media
