#include "support/media_track.h"

#include <cmath>
#include <stdexcept>
#include <utility>

#include "support/media_generator.h"

namespace boxlift::test {

namespace {

/// Errors are told, the encoders' chatter is not.
constexpr int quieter = AV_LOG_VERBOSE - AV_LOG_WARNING + 1;

std::uint32_t toTag(const std::string& text) {
    if (text.empty()) {
        return 0;
    }
    if (text.size() != sizeof(std::uint32_t)) {
        throw std::invalid_argument("a codec tag has four characters");
    }
    std::uint32_t tag = 0;
    for (std::size_t index = 0; index < text.size(); ++index) {
        tag |= static_cast<std::uint32_t>(static_cast<unsigned char>(text[index])) << (8 * index);
    }
    return tag;
}

std::int64_t toTicks(double seconds, AVRational timeBase) {
    return std::llround(seconds * timeBase.den / timeBase.num);
}

} // namespace

libav::CodecPtr prepareEncoder(const std::string& name, const AVFormatContext& container) {
    const AVCodec* codec = avcodec_find_encoder_by_name(name.c_str());
    if (codec == nullptr) {
        throw MissingEncoder("the FFmpeg libraries have no encoder " + name);
    }
    libav::CodecPtr encoder(libav::require(avcodec_alloc_context3(codec), "make an encoder"));
    encoder->log_level_offset = quieter;
    encoder->flags |= AV_CODEC_FLAG_BITEXACT;
    encoder->thread_count = 1;
    if ((container.oformat->flags & AVFMT_GLOBALHEADER) != 0) {
        encoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    }
    return encoder;
}

void openEncoder(AVCodecContext& encoder, const Options& options) {
    const std::string name = encoder.codec->name;
    libav::Dictionary dictionary(options);
    libav::check(avcodec_open2(&encoder, nullptr, dictionary.address()), "open encoder " + name);
    dictionary.requireAllUsed(name);
}

AVStream& addStream(AVFormatContext& container, const AVCodecContext& encoder,
                    const StreamTraits& traits) {
    AVStream& stream = *libav::require(avformat_new_stream(&container, nullptr), "add a stream");
    libav::check(avcodec_parameters_from_context(stream.codecpar, &encoder), "describe a stream");
    stream.codecpar->codec_tag = toTag(traits.codecTag);
    stream.time_base = encoder.time_base;
    stream.sample_aspect_ratio = encoder.sample_aspect_ratio;
    if (traits.isDefault) {
        stream.disposition |= AV_DISPOSITION_DEFAULT;
    }
    if (!traits.language.empty()) {
        av_dict_set(&stream.metadata, "language", traits.language.c_str(), 0);
    }
    return stream;
}

StreamEncoder::StreamEncoder(AVFormatContext& container, libav::CodecPtr encoder,
                             const StreamTraits& traits, DurationOf durationOf)
    : m_container(container), m_encoder(std::move(encoder)), m_traits(traits),
      m_durationOf(std::move(durationOf)), m_stream(addStream(container, *m_encoder, traits)) {}

void StreamEncoder::encode(const AVFrame* frame) {
    libav::check(avcodec_send_frame(m_encoder.get(), frame), "encode a frame");
    const libav::PacketPtr packet = libav::makePacket();
    while (true) {
        const int result = avcodec_receive_packet(m_encoder.get(), packet.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) {
            return;
        }
        libav::check(result, "take a packet from an encoder");
        place(*packet);
        libav::check(av_interleaved_write_frame(&m_container, packet.get()), "write a packet");
    }
}

void StreamEncoder::place(AVPacket& packet) const {
    if (packet.duration == 0 && m_durationOf) {
        packet.duration = m_durationOf(packet.pts);
    }
    double shift = m_traits.startSeconds;
    const double seconds = static_cast<double>(packet.pts) * av_q2d(m_encoder->time_base);
    if (m_traits.gap && seconds >= m_traits.gap->at) {
        shift += m_traits.gap->length;
    }
    av_packet_rescale_ts(&packet, m_encoder->time_base, m_stream.time_base);
    packet.pts += toTicks(shift, m_stream.time_base);
    packet.dts += toTicks(shift, m_stream.time_base);
    packet.stream_index = m_stream.index;
}

} // namespace boxlift::test
