#include "engine/media/audio_encoder.h"

#include <algorithm>
#include <array>
#include <bit>
#include <new>

#include "engine/media/av/check.h"
#include "engine/media/av/compat.h"

namespace boxlift::media {

namespace {

/// ISO/IEC 14496-3, table 1.18; the lowest is left out, since few decoders know it.
constexpr std::array sampleRates{96000, 88200, 64000, 48000, 44100, 32000,
                                 24000, 22050, 16000, 12000, 11025, 8000};
/// The decoder's input buffer, in bits per channel, holds one frame.
constexpr std::int64_t bitsPerFrame = 6144;
constexpr std::int64_t samplesPerFrame = 1024;

av::CodecContextPtr openEncoder(const AudioEncoder::Settings& settings,
                                const std::filesystem::path& path) {
    constexpr std::string_view what = "open AAC encoder";
    const AVCodec* codec = avcodec_find_encoder_by_name("aac");
    if (!codec)
        av::check(AVERROR_ENCODER_NOT_FOUND, av::Operation::encode, what, path);
    av::CodecContextPtr context(avcodec_alloc_context3(codec));
    if (!context)
        throw std::bad_alloc();
    context->sample_rate = settings.sampleRate;
    context->sample_fmt = AudioEncoder::sampleFormat;
    av_channel_layout_from_mask(&context->ch_layout, settings.channelMask);
    context->bit_rate = std::min(
        settings.bitRate,
        AudioEncoder::highestBitRate(settings.sampleRate, std::popcount(settings.channelMask)));
    context->profile = av::profileAacLow;
    context->time_base = {1, settings.sampleRate};
    context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    av::check(avcodec_open2(context.get(), codec, nullptr), av::Operation::encode, what, path);
    return context;
}

} // namespace

bool AudioEncoder::hasSampleRate(int sampleRate) {
    return std::find(sampleRates.begin(), sampleRates.end(), sampleRate) != sampleRates.end();
}

std::int64_t AudioEncoder::highestBitRate(int sampleRate, int channels) {
    return bitsPerFrame * channels * sampleRate / samplesPerFrame;
}

AudioEncoder::AudioEncoder(const Settings& settings, const std::filesystem::path& path)
    : m_path(path), m_context(openEncoder(settings, path)), m_packet(av::makePacket()),
      m_fifo(av_audio_fifo_alloc(sampleFormat, m_context->ch_layout.nb_channels,
                                 2 * m_context->frame_size)) {
    if (!m_fifo)
        throw std::bad_alloc();
    m_silence = makeFrame(m_context->frame_size);
    av_samples_set_silence(m_silence->extended_data, 0, m_context->frame_size,
                           m_context->ch_layout.nb_channels, sampleFormat);
}

av::FramePtr AudioEncoder::makeFrame(int count) const {
    av::FramePtr frame = av::makeFrame();
    frame->format = sampleFormat;
    frame->sample_rate = m_context->sample_rate;
    frame->nb_samples = count;
    if (av_channel_layout_copy(&frame->ch_layout, &m_context->ch_layout) < 0 ||
        av_frame_get_buffer(frame.get(), 0) < 0)
        throw std::bad_alloc();
    return frame;
}

void AudioEncoder::describe(AVStream& to) const {
    av::check(avcodec_parameters_from_context(to.codecpar, m_context.get()), av::Operation::encode,
              "describe audio", m_path);
    to.codecpar->codec_tag = 0;
    to.time_base = m_context->time_base;
}

void AudioEncoder::push(const AudioRun& run, const Sink& sink) {
    if (!m_hasBegun)
        m_position = run.position;
    m_hasBegun = true;
    if (run.frame)
        return add(*run.frame, run.count, sink);
    for (std::int64_t left = run.count; left > 0; left -= m_silence->nb_samples)
        add(*m_silence, std::min<std::int64_t>(left, m_silence->nb_samples), sink);
}

void AudioEncoder::add(const AVFrame& frame, std::int64_t count, const Sink& sink) {
    auto* planes = reinterpret_cast<void**>(frame.extended_data);
    if (av_audio_fifo_write(m_fifo.get(), planes, static_cast<int>(count)) < count)
        throw std::bad_alloc();
    while (av_audio_fifo_size(m_fifo.get()) >= m_context->frame_size)
        encode(m_context->frame_size, sink);
}

void AudioEncoder::encode(int count, const Sink& sink) {
    const av::FramePtr frame = makeFrame(count);
    av_audio_fifo_read(m_fifo.get(), reinterpret_cast<void**>(frame->extended_data), count);
    frame->pts = m_position;
    m_position += count;
    send(frame.get(), sink);
}

void AudioEncoder::send(const AVFrame* frame, const Sink& sink) {
    av::check(avcodec_send_frame(m_context.get(), frame), av::Operation::encode, "encode audio",
              m_path);
    for (;;) {
        const int result = avcodec_receive_packet(m_context.get(), m_packet.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
            return;
        av::check(result, av::Operation::encode, "encode audio", m_path);
        const av::PacketUnref guard{*m_packet};
        sink(*m_packet);
    }
}

void AudioEncoder::finish(const Sink& sink) {
    if (const int left = av_audio_fifo_size(m_fifo.get()); left > 0)
        encode(left, sink);
    send(nullptr, sink);
}

} // namespace boxlift::media
