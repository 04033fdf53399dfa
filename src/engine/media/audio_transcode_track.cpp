#include "engine/media/audio_transcode_track.h"

#include <algorithm>
#include <array>

#include "engine/media/av/check.h"
#include "engine/media/av/conversion.h"

namespace boxlift::media {

namespace {

constexpr int highestSampleRate = 48000;

struct LayoutRow {
    std::uint64_t channelMask;
    std::int64_t bitRate;
};

/// The arrangements that AAC tells by a number, so that every player knows them (ISO/IEC 14496-3,
/// table 1.19); side speakers would need a description of their own, which many do not read. 128
/// kbit/s per channel of a mono or stereo track; the further channels of a surround track are
/// quieter and like one another: 64 each; the low-frequency channel costs next to nothing.
constexpr std::array layouts{
    LayoutRow{AV_CH_LAYOUT_MONO, 128'000},         LayoutRow{AV_CH_LAYOUT_STEREO, 256'000},
    LayoutRow{AV_CH_LAYOUT_SURROUND, 320'000},     LayoutRow{AV_CH_LAYOUT_4POINT0, 384'000},
    LayoutRow{AV_CH_LAYOUT_5POINT0_BACK, 448'000}, LayoutRow{AV_CH_LAYOUT_5POINT1_BACK, 448'000},
};
constexpr const LayoutRow& stereo = layouts[1];
constexpr const LayoutRow& mostChannels = layouts.back();

const LayoutRow& layoutFor(const ChannelLayout& source) {
    const std::uint64_t speakers = source.speakers();
    if (source.count() <= 2)
        return layouts[source.count() == 2 ? 1 : 0];
    // Channels that nobody has named are spread over two.
    if (speakers == 0)
        return stereo;
    if (source.count() > 5)
        return mostChannels;
    const auto row = std::find_if(layouts.begin(), layouts.end(), [&](const LayoutRow& candidate) {
        return (speakers & ~candidate.channelMask) == 0;
    });
    return row == layouts.end() ? mostChannels : *row;
}

AudioConformer::Settings conformerSettings(const AudioEncoder::Settings& to, Time end) {
    return {{to.sampleRate, to.channelMask, AudioEncoder::sampleFormat},
            AudioConformer::LateStart::kept,
            end};
}

} // namespace

AudioEncoder::Settings transcodeSettings(const AVCodecParameters& source) {
    const LayoutRow layout = layoutFor(ChannelLayout::interpret(source.ch_layout));
    const bool keepsRate =
        source.sample_rate <= highestSampleRate && AudioEncoder::hasSampleRate(source.sample_rate);
    return {keepsRate ? source.sample_rate : highestSampleRate, layout.channelMask, layout.bitRate};
}

AudioTranscodeTrack::AudioTranscodeTrack(const AVStream& source, Time start,
                                         const std::filesystem::path& path, Time end)
    : m_start(start), m_decoder(source, path), m_encoder(transcodeSettings(*source.codecpar), path),
      m_conformer(conformerSettings(transcodeSettings(*source.codecpar), end), path) {}

AudioConformer::Sink AudioTranscodeTrack::encode(const Sink& sink) {
    return [this, &sink](const AudioRun& run) { m_encoder.push(run, sink); };
}

void AudioTranscodeTrack::push(const AVPacket& packet, const Sink& sink) {
    m_decoder.push(packet, [&](const AVFrame& frame, Time at) {
        m_conformer.push(frame, at - m_start, encode(sink));
    });
}

void AudioTranscodeTrack::finish(const Sink& sink) {
    m_decoder.finish([&](const AVFrame& frame, Time at) {
        m_conformer.push(frame, at - m_start, encode(sink));
    });
    m_conformer.finish(encode(sink));
    m_encoder.finish(sink);
}

} // namespace boxlift::media
