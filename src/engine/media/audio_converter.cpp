#include "engine/media/audio_converter.h"

#include <algorithm>
#include <vector>

#include "engine/media/audio_mix_matrix.h"
#include "engine/media/av/check.h"

namespace boxlift::media {

namespace {

/// More samples than the resampler's filter has, which is as long as the rates are far apart.
constexpr int filterRoom = 4096;

/// The addresses of a frame's planes, `skip` samples in.
std::vector<const std::uint8_t*> planes(const AVFrame& frame, int skip) {
    const auto format = static_cast<AVSampleFormat>(frame.format);
    const int channels = frame.ch_layout.nb_channels;
    const bool isPlanar = av_sample_fmt_is_planar(format);
    const int step = av_get_bytes_per_sample(format) * (isPlanar ? 1 : channels);
    const int count = isPlanar ? channels : 1;
    std::vector<const std::uint8_t*> addresses;
    addresses.reserve(static_cast<std::size_t>(count));
    for (int plane = 0; plane < count; ++plane)
        addresses.push_back(frame.extended_data[plane] + static_cast<std::ptrdiff_t>(step) * skip);
    return addresses;
}

} // namespace

void AudioConverter::convert(const AVFrame& frame, int skip, const Sink& sink) {
    const Source source{frame.sample_rate, frame.format, ChannelLayout::interpret(frame.ch_layout)};
    if (!m_resampler || source != m_source) {
        flush(sink);
        open(source);
    }
    std::vector<const std::uint8_t*> input = planes(frame, skip);
    pull(input.data(), frame.nb_samples - skip, sink);
}

void AudioConverter::flush(const Sink& sink) {
    if (!m_resampler)
        return;
    if (m_taken > 0 && m_given == 0)
        flushShort(sink);
    else
        pull(nullptr, 0, sink);
    m_resampler.reset();
}

void AudioConverter::flushShort(const Sink& sink) {
    // Sound that is shorter than the filter does not come out by itself: silence pushes it out.
    av::check(swr_inject_silence(m_resampler.get(), filterRoom), av::Operation::decode,
              "convert audio", m_path);
    const auto length = static_cast<int>(
        av_rescale_rnd(m_taken, m_to.sampleRate, m_source.sampleRate, AV_ROUND_UP));
    pull(nullptr, 0, [&](av::FramePtr frame) {
        frame->nb_samples = std::min(frame->nb_samples, length);
        sink(std::move(frame));
    });
}

void AudioConverter::open(const Source& source) {
    ChannelLayout from = source.layout;
    ChannelLayout to = ChannelLayout::ofMask(m_to.channelMask);
    SwrContext* resampler = nullptr;
    const int made = swr_alloc_set_opts2(
        &resampler, to.address(), m_to.sampleFormat, m_to.sampleRate, from.address(),
        static_cast<AVSampleFormat>(source.sampleFormat), source.sampleRate, 0, nullptr);
    m_resampler.reset(resampler);
    av::check(made, av::Operation::decode, "set up audio conversion", m_path);
    // Mixing in integers would round each gain.
    av_opt_set_sample_fmt(resampler, "internal_sample_fmt", AV_SAMPLE_FMT_FLTP, 0);
    if (!(from == to))
        setMatrix(from);
    av::check(swr_init(resampler), av::Operation::decode, "set up audio conversion", m_path);
    m_source = source;
    m_taken = m_given = 0;
}

void AudioConverter::setMatrix(const ChannelLayout& from) {
    // The library's own matrix makes mono 3 dB quieter, and refuses layouts that it does not know.
    const std::vector<double> matrix = mixMatrix(from, m_to.channelMask);
    av::check(swr_set_matrix(m_resampler.get(), matrix.data(), from.count()), av::Operation::decode,
              "mix audio channels", m_path);
}

void AudioConverter::pull(const std::uint8_t** input, int count, const Sink& sink) {
    const int room = av::check(swr_get_out_samples(m_resampler.get(), count), av::Operation::decode,
                               "convert audio", m_path);
    m_taken += count;
    if (room == 0)
        return;
    av::FramePtr frame = av::makeFrame();
    frame->format = m_to.sampleFormat;
    frame->sample_rate = m_to.sampleRate;
    frame->nb_samples = room;
    av_channel_layout_from_mask(&frame->ch_layout, m_to.channelMask);
    av::check(av_frame_get_buffer(frame.get(), 0), av::Operation::decode, "convert audio", m_path);
    frame->nb_samples =
        av::check(swr_convert(m_resampler.get(), frame->extended_data, room, input, count),
                  av::Operation::decode, "convert audio", m_path);
    m_given += frame->nb_samples;
    if (frame->nb_samples > 0)
        sink(std::move(frame));
}

} // namespace boxlift::media
