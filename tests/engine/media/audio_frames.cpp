#include "engine/media/audio_frames.h"

#include <cmath>
#include <numbers>
#include <stdexcept>

namespace boxlift::test {

namespace {

void store(AVFrame& frame, int channel, int sample, double value) {
    const int channels = frame.ch_layout.nb_channels;
    const int interleaved = sample * channels + channel;
    switch (frame.format) {
    case AV_SAMPLE_FMT_FLTP:
        reinterpret_cast<float*>(frame.extended_data[channel])[sample] = static_cast<float>(value);
        return;
    case AV_SAMPLE_FMT_FLT:
        reinterpret_cast<float*>(frame.data[0])[interleaved] = static_cast<float>(value);
        return;
    case AV_SAMPLE_FMT_S16:
        reinterpret_cast<std::int16_t*>(frame.data[0])[interleaved] =
            static_cast<std::int16_t>(std::lround(value * 32767));
        return;
    default:
        throw std::invalid_argument("no such sample format");
    }
}

} // namespace

media::av::FramePtr makeFrame(const FrameShape& shape, int count, const FrameSignal& signal,
                              std::int64_t start) {
    media::av::FramePtr frame = media::av::makeFrame();
    frame->format = shape.format;
    frame->sample_rate = shape.sampleRate;
    frame->nb_samples = count;
    if (av_channel_layout_from_string(&frame->ch_layout, shape.layout.c_str()) < 0 ||
        av_frame_get_buffer(frame.get(), 0) < 0)
        throw std::invalid_argument("no such frame: " + shape.layout);
    for (int channel = 0; channel < frame->ch_layout.nb_channels; ++channel)
        for (int sample = 0; sample < count; ++sample)
            store(*frame, channel, sample, signal(channel, start + sample));
    return frame;
}

double sampleOf(const AVFrame& frame, int channel, int sample) {
    const int interleaved = sample * frame.ch_layout.nb_channels + channel;
    switch (frame.format) {
    case AV_SAMPLE_FMT_FLTP:
        return reinterpret_cast<const float*>(frame.extended_data[channel])[sample];
    case AV_SAMPLE_FMT_FLT:
        return reinterpret_cast<const float*>(frame.data[0])[interleaved];
    case AV_SAMPLE_FMT_S16:
        return reinterpret_cast<const std::int16_t*>(frame.data[0])[interleaved] / 32767.0;
    default:
        throw std::invalid_argument("no such sample format");
    }
}

FrameSignal tone(double frequency, double amplitude, int sampleRate, int inChannel) {
    return [=](int channel, std::int64_t sample) {
        if (inChannel >= 0 && channel != inChannel)
            return 0.0;
        const double seconds = static_cast<double>(sample) / sampleRate;
        return amplitude * std::sin(2 * std::numbers::pi * frequency * seconds);
    };
}

} // namespace boxlift::test
