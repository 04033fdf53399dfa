#include "support/media_track.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "support/media_pattern.h"

namespace boxlift::test {

namespace {

/// For encoders that take frames of any size.
constexpr int usualFrameSize = 1024;

AVSampleFormat chooseSampleFormat(const AudioSpec& spec, const AVCodec& codec) {
    if (!spec.sampleFormat.empty()) {
        return av_get_sample_fmt(spec.sampleFormat.c_str());
    }
    const auto formats = libav::sampleFormats(codec);
    return formats.empty() ? AV_SAMPLE_FMT_S16 : formats.front();
}

libav::CodecPtr makeEncoder(AVFormatContext& container, const AudioSpec& spec) {
    libav::CodecPtr encoder = prepareEncoder(spec.codec, container);
    encoder->sample_rate = spec.sampleRate;
    encoder->time_base = {1, spec.sampleRate};
    encoder->sample_fmt = chooseSampleFormat(spec, *encoder->codec);
    libav::check(av_channel_layout_from_string(&encoder->ch_layout, spec.layout.c_str()),
                 "understand channel layout " + spec.layout);
    if (spec.bitRate > 0) {
        encoder->bit_rate = spec.bitRate;
    }
    openEncoder(*encoder, spec.encoderOptions);
    return encoder;
}

libav::FramePtr makeAudioFrame(const AVCodecContext& encoder, int samples) {
    libav::FramePtr frame = libav::makeFrame();
    frame->nb_samples = samples;
    frame->format = encoder.sample_fmt;
    frame->sample_rate = encoder.sample_rate;
    libav::check(av_channel_layout_copy(&frame->ch_layout, &encoder.ch_layout), "copy a layout");
    libav::check(av_frame_get_buffer(frame.get(), 0), "make room for sound");
    return frame;
}

class AudioTrack final : public Track {
public:
    AudioTrack(AVFormatContext& container, const AudioSpec& spec, double seconds)
        : m_spec(spec), m_encoder(container, makeEncoder(container, spec),
                                  {.codecTag = spec.codecTag,
                                   .language = spec.language,
                                   .isDefault = spec.isDefault,
                                   .startSeconds = spec.startSeconds,
                                   .gap = spec.gap}),
          m_converter(libav::makeConverter(m_encoder.context().ch_layout, spec.sampleRate,
                                           AV_SAMPLE_FMT_DBL, m_encoder.context().sample_fmt)),
          m_sampleCount(std::llround(seconds * spec.sampleRate)) {}

    double position() const override {
        return m_finished ? std::numeric_limits<double>::infinity()
                          : m_spec.startSeconds + static_cast<double>(m_next) / m_spec.sampleRate;
    }

    void advance() override {
        m_finished = m_next == m_sampleCount;
        if (m_finished) {
            m_encoder.encode(nullptr);
            return;
        }
        const int wanted = m_encoder.context().frame_size;
        const std::int64_t size = wanted > 0 ? wanted : usualFrameSize;
        const libav::FramePtr frame =
            makeSound(static_cast<int>(std::min(size, m_sampleCount - m_next)));
        m_encoder.encode(frame.get());
        m_next += frame->nb_samples;
    }

private:
    libav::FramePtr makeSound(int samples) {
        libav::FramePtr frame = makeAudioFrame(m_encoder.context(), samples);
        std::vector<double> values;
        for (int sample = 0; sample < samples; ++sample) {
            for (int channel = 0; channel < frame->ch_layout.nb_channels; ++channel) {
                values.push_back(signalValue(m_spec, channel, m_next + sample));
            }
        }
        const auto* input = reinterpret_cast<const std::uint8_t*>(values.data());
        libav::check(swr_convert(m_converter.get(), frame->extended_data, samples, &input, samples),
                     "convert samples");
        frame->pts = m_next;
        return frame;
    }

    AudioSpec m_spec;
    StreamEncoder m_encoder;
    libav::ResamplerPtr m_converter;
    std::int64_t m_sampleCount;
    std::int64_t m_next = 0;
    bool m_finished = false;
};

} // namespace

std::unique_ptr<Track> makeAudioTrack(AVFormatContext& container, const AudioSpec& spec,
                                      double seconds) {
    return std::make_unique<AudioTrack>(container, spec, seconds);
}

} // namespace boxlift::test
