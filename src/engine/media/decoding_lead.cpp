#include "engine/media/decoding_lead.h"

#include <algorithm>
#include <span>

#include "engine/media/av/demuxer.h"

namespace boxlift::media {

namespace {

/// Covers several times the deepest reordering that the codecs allow (16 pictures).
constexpr int examinedPackets = 64;

} // namespace

std::int64_t decodingLead(std::shared_ptr<const InputFile> file, int stream, std::stop_token stop) {
    const auto demuxer =
        av::Demuxer::open(std::move(file), av::ProbeDepth::header, std::move(stop));
    AVFormatContext& context = demuxer->context();
    for (AVStream* other : std::span(context.streams, context.nb_streams))
        other->discard = other->index == stream ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    const av::PacketPtr packet = av::makePacket();
    std::int64_t lead = 0;
    for (int i = 0; i < examinedPackets && demuxer->read(*packet); ++i) {
        if (packet->pts != AV_NOPTS_VALUE && packet->dts != AV_NOPTS_VALUE)
            lead = std::max(lead, packet->dts - packet->pts);
        av_packet_unref(packet.get());
    }
    return lead;
}

} // namespace boxlift::media
