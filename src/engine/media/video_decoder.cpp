#include "engine/media/video_decoder.h"

#include "engine/media/av/check.h"
#include "engine/media/av/decoder.h"

namespace boxlift::media {

namespace {

using av::Operation;

/// Each failure belongs to one of the packets in the decoder; no decoder holds so many.
constexpr int mostFailures = 256;

} // namespace

VideoDecoder::VideoDecoder(const AVStream& source, const std::filesystem::path& path)
    : m_path(path), m_context(av::openDecoder(source, av::DecoderThreads::allCores, path)),
      m_frame(av::makeFrame()) {}

void VideoDecoder::push(const AVPacket& packet, const Sink& sink) {
    // An empty packet would mean the end.
    if (packet.size <= 0)
        return;
    m_isAwaited = m_isAwaited || !(packet.flags & AV_PKT_FLAG_DISCARD);
    send(&packet, sink);
}

void VideoDecoder::finish(const Sink& sink) {
    send(nullptr, sink);
    if (m_isAwaited && !m_hasDecoded)
        av::check(m_damage ? m_damage : AVERROR_INVALIDDATA, Operation::decode, "decode video",
                  m_path);
}

void VideoDecoder::send(const AVPacket* packet, const Sink& sink) {
    int result = avcodec_send_packet(m_context.get(), packet);
    if (result == AVERROR(EAGAIN)) {
        receive(sink);
        result = avcodec_send_packet(m_context.get(), packet);
    }
    if (result < 0 && result != AVERROR_EOF)
        skip(result);
    receive(sink);
}

void VideoDecoder::receive(const Sink& sink) {
    for (int failures = 0; failures < mostFailures;) {
        const av::FrameUnref guard{*m_frame};
        const int result = avcodec_receive_frame(m_context.get(), m_frame.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
            return;
        if (result < 0) {
            skip(result);
            ++failures;
            continue;
        }
        m_hasDecoded = true;
        m_frame->pts = m_frame->best_effort_timestamp;
        sink(*m_frame);
    }
}

void VideoDecoder::skip(int code) {
    if (code == AVERROR(ENOMEM) || code == AVERROR_EXIT)
        av::check(code, Operation::decode, "decode video", m_path);
    m_damage = code;
}

} // namespace boxlift::media
