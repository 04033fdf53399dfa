#include "engine/media/text_copy_track.h"

#include <new>

#include "engine/media/av/handles.h"
#include "engine/media/stream_copy.h"

namespace boxlift::media {

void TextCopyTrack::describe(AVStream& to) const {
    copyStreamDescription(to, m_source);
}

void TextCopyTrack::push(const AVPacket& packet, const Sink& sink) {
    const bool goesForward =
        packet.pts != AV_NOPTS_VALUE && (m_last == AV_NOPTS_VALUE || packet.pts > m_last);
    if (!goesForward)
        return;
    m_last = packet.pts;
    const av::PacketPtr copy(av_packet_clone(&packet));
    if (!copy)
        throw std::bad_alloc();
    copy->dts = copy->pts;
    sink(*copy);
}

} // namespace boxlift::media
