#include "engine/media/timeline.h"

#include <algorithm>
#include <span>
#include <utility>

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

/// What is left of a sound's media behind its edit's beginning. A short cut is none: writers
/// disagree whether the priming counts in the length.
Time lengthBehind(Time mediaStart, Time length) {
    const Time longestPriming = Time::fromRate(1, 2);
    return mediaStart > longestPriming ? std::max(Time::zero(), length - mediaStart) : length;
}

} // namespace

Timeline Timeline::of(av::Demuxer& demuxer, std::stop_token stop,
                      std::optional<MovieLayout> layout) {
    Timeline timeline;
    const AVFormatContext& context = demuxer.context();
    timeline.m_fileDuration = av::toTime(context.duration, AV_TIME_BASE_Q);
    if (demuxer.isMovie())
        timeline.m_layout = layout ? std::move(layout) : MovieLayout::read(*demuxer.file(), stop);
    if (timeline.m_layout)
        timeline.readMovie(demuxer);
    else
        timeline.readStreams(context);
    if (!timeline.m_duration.isValid())
        timeline.m_duration = timeline.m_fileDuration;
    return timeline;
}

void Timeline::readMovie(av::Demuxer& demuxer) {
    if (m_layout->isFragmented)
        walkFragments(demuxer);
    m_isDeclared = true;
    m_duration = lastEnd(demuxer.context());
}

void Timeline::readStreams(const AVFormatContext& context) {
    m_isDeclared = context.duration_estimation_method == AVFMT_DURATION_FROM_STREAM;
    m_fileStart = Time();
    for (const AVStream* stream : std::span(context.streams, context.nb_streams)) {
        const Time start = av::toTime(stream->start_time, stream->time_base);
        if (carriesMedia(*stream) && start.isValid())
            m_fileStart = m_fileStart.isValid() ? std::min(m_fileStart, start) : start;
    }
    if (!m_fileStart.isValid())
        m_fileStart = Time::zero();
    // The demuxer's own sum counts tracks of other kinds as well, and is a guess where it is more.
    const Time end = lastEnd(context);
    const bool isGuess = m_fileDuration.isValid() && end > m_fileDuration;
    m_duration = isGuess ? m_fileDuration : end;
}

Time Timeline::lastEnd(const AVFormatContext& context) const {
    Time last;
    for (const AVStream* stream : std::span(context.streams, context.nb_streams))
        if (carriesMedia(*stream))
            last = std::max(last, range(*stream).end());
    return last;
}

const MovieTrack* Timeline::trackOf(const AVStream& stream) const {
    return m_layout ? m_layout->track(static_cast<std::uint32_t>(stream.id)) : nullptr;
}

bool Timeline::isSpliced(const AVStream& stream) const {
    const MovieTrack* track = trackOf(stream);
    return track && track->mediaEdits > 1;
}

bool Timeline::hasPartialKeys(const AVStream& stream) const {
    const MovieTrack* track = trackOf(stream);
    return track && track->hasPartialKeys;
}

Time Timeline::shownEnd(const AVStream& stream) const {
    const MovieTrack* track = trackOf(stream);
    const bool isTold = track && track->hasEdits && isIndexed();
    return isTold && track->editedEnd > track->leadingGap ? track->editedEnd : Time();
}

TimeRange Timeline::range(const AVStream& stream) const {
    const MovieTrack* track = trackOf(stream);
    return track ? movieRange(stream, *track) : streamRange(stream);
}

TimeRange Timeline::movieRange(const AVStream& stream, const MovieTrack& track) const {
    const Time length = mediaLength(stream, track, m_layout->isFragmented);
    if (!track.hasEdits)
        return {Time::zero(), length};
    const bool isSound = stream.codecpar->codec_type == AVMEDIA_TYPE_AUDIO;
    const Time available = isSound ? lengthBehind(track.mediaStart, length) : length;
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
