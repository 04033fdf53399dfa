#include "engine/media/timeline.h"

#include <algorithm>
#include <span>

#include "engine/media/av/conversion.h"
#include "engine/media/error.h"

namespace boxlift::media {

namespace {

bool carriesMedia(const AVStream& stream) {
    const AVMediaType type = stream.codecpar->codec_type;
    return !av::isPicture(stream) && (type == AVMEDIA_TYPE_VIDEO || type == AVMEDIA_TYPE_AUDIO);
}

/// With every stream discarded a single read goes over all fragments, reading their headers only;
/// the demuxer adds up the streams' lengths as it goes.
void walkFragments(av::Demuxer& demuxer) {
    const std::span streams(demuxer.context().streams, demuxer.context().nb_streams);
    for (AVStream* stream : streams)
        stream->discard = AVDISCARD_ALL;
    const av::PacketPtr packet = av::makePacket();
    try {
        while (demuxer.read(*packet))
            av_packet_unref(packet.get());
    } catch (const Error&) {
        // A damaged fragment ends the walk: what lies before it counts.
    }
}

Time mediaLength(const AVStream& stream, const MovieTrack& track, bool isFragmented) {
    const Time walked = av::toTime(stream.duration, stream.time_base);
    if (isFragmented && walked.isValid())
        return walked;
    return track.mediaDuration.isValid() ? track.mediaDuration : walked;
}

} // namespace

Timeline Timeline::of(av::Demuxer& demuxer, std::stop_token stop) {
    Timeline timeline;
    AVFormatContext& context = demuxer.context();
    if (demuxer.isMovie())
        timeline.m_layout = MovieLayout::read(*demuxer.file(), stop);
    if (timeline.m_layout && timeline.m_layout->isFragmented)
        walkFragments(demuxer);
    const Time start = av::toTime(context.start_time, AV_TIME_BASE_Q);
    timeline.m_fileStart = start.isValid() ? start : Time::zero();
    timeline.m_fileDuration = av::toTime(context.duration, AV_TIME_BASE_Q);
    timeline.m_isDeclared =
        timeline.m_layout || context.duration_estimation_method == AVFMT_DURATION_FROM_STREAM;
    if (!timeline.m_layout)
        timeline.m_duration = timeline.m_fileDuration;
    for (const AVStream* stream : std::span(context.streams, context.nb_streams)) {
        if (!carriesMedia(*stream) || (!timeline.m_layout && timeline.m_duration.isValid()))
            continue;
        const Time end = timeline.range(*stream).end();
        if (end.isValid() && (!timeline.m_duration.isValid() || end > timeline.m_duration))
            timeline.m_duration = end;
    }
    if (!timeline.m_duration.isValid())
        timeline.m_duration = timeline.m_fileDuration;
    return timeline;
}

const MovieTrack* Timeline::trackOf(const AVStream& stream) const {
    return m_layout ? m_layout->track(static_cast<std::uint32_t>(stream.id)) : nullptr;
}

bool Timeline::isSpliced(const AVStream& stream) const {
    const MovieTrack* track = trackOf(stream);
    return track && track->mediaEdits > 1;
}

TimeRange Timeline::range(const AVStream& stream) const {
    const MovieTrack* track = trackOf(stream);
    return track ? movieRange(stream, *track) : streamRange(stream);
}

TimeRange Timeline::movieRange(const AVStream& stream, const MovieTrack& track) const {
    const Time length = mediaLength(stream, track, m_layout->isFragmented);
    if (!track.hasEdits)
        return {Time::zero(), length};
    // With reordered pictures the edit begins where presentation begins and takes nothing away.
    const bool isSound = stream.codecpar->codec_type == AVMEDIA_TYPE_AUDIO;
    const Time available = isSound ? std::max(Time::zero(), length - track.mediaStart) : length;
    const Time edited = track.editedEnd - track.leadingGap;
    const bool isOpenEnded = m_layout->isFragmented || edited <= Time::zero();
    if (isOpenEnded && length.isValid())
        return {track.leadingGap, available};
    // One edit cannot show more than there is; several may repeat it.
    const bool isCut = track.mediaEdits == 1 && length.isValid();
    return {track.leadingGap, isCut ? std::min(edited, available) : edited};
}

TimeRange Timeline::streamRange(const AVStream& stream) const {
    const Time start = av::toTime(stream.start_time, stream.time_base);
    const Time length = av::toTime(stream.duration, stream.time_base);
    const Time offset =
        start.isValid() ? std::max(Time::zero(), start - m_fileStart) : Time::zero();
    return {offset, length.isValid() ? length : m_fileDuration};
}

} // namespace boxlift::media
