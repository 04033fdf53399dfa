#include "engine/media/audio_decoder.h"

#include "engine/media/av/check.h"
#include "engine/media/av/conversion.h"
#include "engine/media/av/decoder.h"

namespace boxlift::media {

AudioDecoder::AudioDecoder(const AVStream& stream, const std::filesystem::path& path)
    : m_path(path), m_timeBase(stream.time_base),
      m_context(av::openDecoder(stream, av::DecoderThreads::one, path)), m_frame(av::makeFrame()) {}

void AudioDecoder::push(const AVPacket& packet, const Sink& sink) {
    // An empty packet would end the stream.
    if (packet.size == 0)
        return;
    const std::int64_t damaged = m_damagedPackets;
    if (const int result = send(&packet); result < 0)
        noteDamage(result);
    receive(sink);
    if (m_damagedPackets == damaged)
        ++m_goodPackets;
}

int AudioDecoder::send(const AVPacket* packet) {
    // The decoder never is full: every frame is taken out after each packet.
    const int result = avcodec_send_packet(m_context.get(), packet);
    return result == AVERROR_EOF ? 0 : result;
}

void AudioDecoder::receive(const Sink& sink) {
    for (;;) {
        const int result = avcodec_receive_frame(m_context.get(), m_frame.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
            return;
        if (result < 0)
            return noteDamage(result);
        const av::FrameUnref guard{*m_frame};
        sink(*m_frame, av::toTime(m_frame->best_effort_timestamp, m_timeBase));
    }
}

void AudioDecoder::noteDamage(int code) {
    if (code == AVERROR(ENOMEM))
        av::check(code, av::Operation::decode, "decode audio", m_path);
    m_firstDamage = m_firstDamage ? m_firstDamage : code;
    ++m_damagedPackets;
}

void AudioDecoder::finish(const Sink& sink) {
    if (const int result = send(nullptr); result < 0)
        noteDamage(result);
    receive(sink);
    if (m_damagedPackets > m_goodPackets)
        av::check(m_firstDamage, av::Operation::decode, "decode audio", m_path);
}

} // namespace boxlift::media
