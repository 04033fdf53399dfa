#include "support/media_decode.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <string_view>
#include <utility>

#include "support/media_input.h"

namespace boxlift::test {

namespace {

/// Time stamps that are off by less than this are rounding, not gaps.
constexpr double smallestGapSeconds = 0.02;

/// Appends frames to a DecodedAudio.
class AudioCollector {
public:
    explicit AudioCollector(AVRational timeBase) : m_timeBase(timeBase) {}

    void add(const AVFrame& frame) {
        if (m_converter == nullptr) {
            start(frame);
        }
        fillGap(frame);
        const auto old = m_audio.samples.size();
        const auto channels = static_cast<std::size_t>(m_audio.channels);
        m_audio.samples.resize(old + static_cast<std::size_t>(frame.nb_samples) * channels);
        auto* output = reinterpret_cast<std::uint8_t*>(m_audio.samples.data() + old);
        const auto** input = const_cast<const std::uint8_t**>(frame.extended_data);
        libav::check(
            swr_convert(m_converter.get(), &output, frame.nb_samples, input, frame.nb_samples),
            "convert samples");
    }

    DecodedAudio take() { return std::move(m_audio); }

private:
    void start(const AVFrame& frame) {
        std::array<char, 128> layout{};
        av_channel_layout_describe(&frame.ch_layout, layout.data(), layout.size());
        m_audio.sampleRate = frame.sample_rate;
        m_audio.channels = frame.ch_layout.nb_channels;
        m_audio.layout = layout.data();
        m_audio.startSeconds = secondsOf(frame).value_or(0);
        m_converter =
            libav::makeConverter(frame.ch_layout, frame.sample_rate,
                                 static_cast<AVSampleFormat>(frame.format), AV_SAMPLE_FMT_FLT);
    }

    std::optional<double> secondsOf(const AVFrame& frame) const {
        if (frame.best_effort_timestamp == AV_NOPTS_VALUE) {
            return std::nullopt;
        }
        return static_cast<double>(frame.best_effort_timestamp) * av_q2d(m_timeBase);
    }

    void fillGap(const AVFrame& frame) {
        const double end = m_audio.startSeconds + m_audio.seconds();
        const double gap = secondsOf(frame).value_or(end) - end;
        if (gap > smallestGapSeconds) {
            const auto length = static_cast<std::size_t>(std::llround(gap * m_audio.sampleRate));
            m_audio.samples.resize(m_audio.samples.size() +
                                   length * static_cast<std::size_t>(m_audio.channels));
        }
    }

    AVRational m_timeBase;
    DecodedAudio m_audio;
    libav::ResamplerPtr m_converter;
};

/// Only the MPEG-4 family states an edited length; elsewhere it may be a guess.
std::optional<double> editedEnd(const StreamDecoder& decoder) {
    const AVStream& stream = decoder.stream();
    const bool isStated = std::string_view(decoder.input().iformat->name).starts_with("mov,");
    if (!isStated || stream.duration == AV_NOPTS_VALUE || stream.start_time == AV_NOPTS_VALUE) {
        return std::nullopt;
    }
    return static_cast<double>(stream.start_time + stream.duration) * av_q2d(stream.time_base);
}

void clip(DecodedAudio& audio, double end) {
    const double seconds = std::max(0.0, end - audio.startSeconds);
    const auto length = static_cast<std::size_t>(std::llround(seconds * audio.sampleRate));
    if (length < audio.length()) {
        audio.samples.resize(length * static_cast<std::size_t>(audio.channels));
    }
}

} // namespace

float DecodedAudio::at(std::size_t sample, int channel) const {
    return samples.at(sample * static_cast<std::size_t>(channels) +
                      static_cast<std::size_t>(channel));
}

DecodedAudio decodeAudio(const std::filesystem::path& path, std::size_t number) {
    StreamDecoder decoder(path, AVMEDIA_TYPE_AUDIO, number);
    AudioCollector collector(decoder.stream().time_base);
    while (const AVFrame* frame = decoder.next()) {
        collector.add(*frame);
    }
    DecodedAudio audio = collector.take();
    if (const auto end = editedEnd(decoder); end && audio.channels > 0) {
        clip(audio, *end);
    }
    return audio;
}

} // namespace boxlift::test
