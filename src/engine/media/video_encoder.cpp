#include "engine/media/video_encoder.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <new>

#include "engine/media/av/check.h"
#include "engine/media/av/compat.h"
#include "engine/media/h264_encoder.h"

namespace boxlift::media {

namespace {

using av::Operation;

/// A player can start at a key frame only: at most so many seconds from one to the next.
constexpr std::int64_t keySeconds = 4;
/// Sources that tell no rate, or one that cannot be true.
constexpr AVRational assumedRate{25, 1};
constexpr int highestRate = 1000;

AVRational saneRate(AVRational rate) {
    const bool isSane = rate.num > 0 && rate.den > 0 && rate.num / rate.den <= highestRate;
    return isSane ? rate : assumedRate;
}

int inRange(std::int64_t value) {
    return static_cast<int>(std::clamp<std::int64_t>(value, 1, INT_MAX));
}

void applyColour(AVCodecContext& context, const VideoColour& colour) {
    context.color_primaries = colour.primaries;
    context.color_trc = colour.transfer;
    context.colorspace = colour.matrix;
    context.color_range = colour.range;
}

void configure(AVCodecContext& context, const EncodeSettings& settings,
               const VideoEncoder::Input& input) {
    context.width = settings.size.width;
    context.height = settings.size.height;
    context.pix_fmt = AV_PIX_FMT_YUV420P;
    context.profile = av::profileH264High;
    context.sample_aspect_ratio = {1, 1};
    context.time_base = input.timeBase;
    context.framerate = saneRate(input.frameRate);
    context.flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    context.thread_count = 0;
    context.rc_max_rate = settings.rateCap;
    context.rc_buffer_size = inRange(settings.buffer);
    // By number for steady rates; markKey() sees to the others.
    context.gop_size = inRange(av_rescale_q(keySeconds, {1, 1}, av_inv_q(context.framerate)) * 2);
    applyColour(context, input.colour);
}

/// A negative FFmpeg code on failure.
int setInstructions(AVCodecContext& context, const H264Encoder& encoder) {
    const bool hasAvx512 = (av_get_cpu_flags() & AV_CPU_FLAG_AVX512) != 0;
    if (!*encoder.withoutAvx512 || !hasAvx512 || H264Encoder::canUseAvx512(context.width))
        return 0;
    return av_opt_set(context.priv_data, "x264-params", encoder.withoutAvx512, 0);
}

/// A negative FFmpeg code on failure.
int setQuality(AVCodecContext& context, const H264Encoder& encoder) {
    if (*encoder.effort) {
        if (const int result = av_opt_set(context.priv_data, "preset", encoder.effort, 0);
            result < 0)
            return result;
    }
    if (encoder.scale == H264Encoder::Scale::rateFactor)
        return av_opt_set_double(context.priv_data, "crf", encoder.quality, 0);
    context.flags |= AV_CODEC_FLAG_QSCALE;
    context.global_quality = static_cast<int>(std::lround(encoder.quality * FF_QP2LAMBDA));
    return 0;
}

av::CodecContextPtr openEncoder(const EncodeSettings& settings, const VideoEncoder::Input& input,
                                const std::filesystem::path& path) {
    int result = AVERROR_ENCODER_NOT_FOUND;
    for (const H264Encoder& encoder : h264Encoders(avcodec_find_encoder_by_name)) {
        const AVCodec* codec = avcodec_find_encoder_by_name(encoder.name);
        av::CodecContextPtr context(avcodec_alloc_context3(codec));
        if (!context)
            throw std::bad_alloc();
        configure(*context, settings, input);
        result = setQuality(*context, encoder);
        if (result >= 0)
            result = setInstructions(*context, encoder);
        if (result >= 0)
            result = avcodec_open2(context.get(), codec, nullptr);
        if (result >= 0)
            return context;
    }
    av::check(result, Operation::encode, "open video encoder", path);
    return nullptr;
}

} // namespace

VideoEncoder::VideoEncoder(const EncodeSettings& settings, const Input& input,
                           const std::filesystem::path& path)
    : m_path(path), m_context(openEncoder(settings, input, path)), m_packet(av::makePacket()),
      m_end(input.end) {
    const AVRational base = m_context->time_base;
    m_usualDuration =
        std::max<std::int64_t>(1, av_rescale_q(1, av_inv_q(m_context->framerate), base));
    m_keyInterval = av_rescale_q(keySeconds, {1, 1}, base);
}

int VideoEncoder::check(int result, const char* what) const {
    return av::check(result, Operation::encode, what, m_path);
}

void VideoEncoder::describe(AVStream& to) const {
    check(avcodec_parameters_from_context(to.codecpar, m_context.get()), "describe video");
    to.time_base = m_context->time_base;
    to.avg_frame_rate = m_context->framerate;
    to.sample_aspect_ratio = m_context->sample_aspect_ratio;
}

void VideoEncoder::push(AVFrame& frame, const Sink& sink) {
    if (!place(frame))
        return;
    markKey(frame);
    send(&frame, sink);
}

bool VideoEncoder::place(AVFrame& frame) {
    const bool isFirst = m_last == AV_NOPTS_VALUE;
    if (frame.pts == AV_NOPTS_VALUE)
        frame.pts = isFirst ? 0 : m_last + m_lastDuration;
    const std::int64_t duration = durationOf(frame);
    if (frame.pts + duration <= 0)
        return false;
    frame.pts = std::max<std::int64_t>(0, frame.pts);
    if (!isFirst && frame.pts <= m_last)
        return false;
    // A picture is shown until the next one comes.
    if (const auto previous = m_durations.find(m_last); previous != m_durations.end())
        previous->second = frame.pts - m_last;
    m_durations[frame.pts] = duration;
    m_last = frame.pts;
    m_lastDuration = duration;
    return true;
}

std::int64_t VideoEncoder::durationOf(const AVFrame& frame) const {
    const std::int64_t told = av::frameDuration(frame);
    const std::int64_t duration = told > 0 ? told : m_usualDuration;
    const bool isCut = m_end != AV_NOPTS_VALUE && frame.pts < m_end;
    return isCut ? std::min(duration, m_end - frame.pts) : duration;
}

void VideoEncoder::markKey(AVFrame& frame) {
    // The source's own picture types are no wish.
    frame.pict_type = AV_PICTURE_TYPE_NONE;
    if (m_lastKey != AV_NOPTS_VALUE && frame.pts - m_lastKey < m_keyInterval)
        return;
    frame.pict_type = AV_PICTURE_TYPE_I;
    m_lastKey = frame.pts;
}

void VideoEncoder::finish(const Sink& sink) {
    send(nullptr, sink);
}

void VideoEncoder::send(const AVFrame* frame, const Sink& sink) {
    // Everything was received after the frame before, so there is room.
    check(avcodec_send_frame(m_context.get(), frame), "encode video");
    for (;;) {
        const av::PacketUnref guard{*m_packet};
        const int result = avcodec_receive_packet(m_context.get(), m_packet.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
            return;
        check(result, "encode video");
        if (const auto shown = m_durations.find(m_packet->pts); shown != m_durations.end()) {
            m_packet->duration = shown->second;
            m_durations.erase(shown);
        }
        sink(*m_packet);
    }
}

} // namespace boxlift::media
