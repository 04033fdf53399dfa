#include "engine/media/audio_transcode_track.h"

#include <gtest/gtest.h>

#include "engine/media/audio_files.h"
#include "engine/media/muxer.h"
#include "engine/media/packet_source.h"
#include "support/media_decode.h"
#include "support/media_measure.h"
#include "support/media_probe.h"
#include "support/temp_folder.h"

namespace boxlift::media {

namespace {

using test::AudioSpec;
using test::MediaSpec;

AudioEncoder::Settings settingsFor(const char* layout, int sampleRate = 48000) {
    av::ParametersPtr parameters(avcodec_parameters_alloc());
    EXPECT_EQ(av_channel_layout_from_string(&parameters->ch_layout, layout), 0) << layout;
    parameters->sample_rate = sampleRate;
    return transcodeSettings(*parameters);
}

struct LayoutCase {
    const char* source;
    std::uint64_t mask;
    std::int64_t bitRate;
};

TEST(TranscodeSettings, KeepsChannelsUpToFivePointOne) {
    for (const LayoutCase& expected : {
             LayoutCase{"mono", AV_CH_LAYOUT_MONO, 128'000},
             {"stereo", AV_CH_LAYOUT_STEREO, 256'000},
             {"downmix", AV_CH_LAYOUT_STEREO, 256'000},
             {"3.0", AV_CH_LAYOUT_SURROUND, 320'000},
             {"3.0(back)", AV_CH_LAYOUT_4POINT0, 384'000},
             {"4.0", AV_CH_LAYOUT_4POINT0, 384'000},
             {"quad", AV_CH_LAYOUT_5POINT0_BACK, 448'000},
             {"quad(side)", AV_CH_LAYOUT_5POINT0_BACK, 448'000},
             {"5.0(side)", AV_CH_LAYOUT_5POINT0_BACK, 448'000},
             {"2.1", AV_CH_LAYOUT_5POINT1_BACK, 448'000},
             {"5.1", AV_CH_LAYOUT_5POINT1_BACK, 448'000},
             {"5.1(side)", AV_CH_LAYOUT_5POINT1_BACK, 448'000},
             {"7.1", AV_CH_LAYOUT_5POINT1_BACK, 448'000},
             {"22.2", AV_CH_LAYOUT_5POINT1_BACK, 448'000},
             {"24 channels", AV_CH_LAYOUT_STEREO, 256'000},
         }) {
        const auto settings = settingsFor(expected.source);
        EXPECT_EQ(settings.channelMask, expected.mask) << expected.source;
        EXPECT_EQ(settings.bitRate, expected.bitRate) << expected.source;
    }
}

TEST(TranscodeSettings, KeepsSampleRatesThatAacHasUpTo48Kilohertz) {
    for (const int rate : {8000, 11025, 22050, 32000, 44100, 48000})
        EXPECT_EQ(settingsFor("stereo", rate).sampleRate, rate);
    for (const int rate : {88200, 96000, 192000, 37800, 7350})
        EXPECT_EQ(settingsFor("stereo", rate).sampleRate, 48000) << rate;
}

/// Transcodes the first audio track of a file into an M4A file.
void transcode(const std::filesystem::path& from, const std::filesystem::path& to) {
    const auto asset = test::openAsset(from);
    const auto selection = Selection::of(*asset);
    ASSERT_TRUE(selection.has_value());
    const auto track = asset->loadTracks(MediaType::audio).at(0);
    const int index = static_cast<const FileTrack&>(*track).streamIndex();
    PacketSource source(*selection, {});
    AudioTranscodeTrack transcoder(source.stream(index), Time::zero(), from,
                                   source.isDeclared() ? source.range(index).end() : Time());
    Muxer muxer(to, FileType::AVFileTypeAppleM4A, IndexPlace::end, {});
    transcoder.describe(muxer.addStream());
    muxer.writeHeader();
    const auto sink = [&](AVPacket& packet) {
        packet.stream_index = 0;
        av_packet_rescale_ts(&packet, transcoder.timeBase(), muxer.stream(0).time_base);
        muxer.write(packet);
    };
    const av::PacketPtr packet = av::makePacket();
    while (source.next(*packet)) {
        const av::PacketUnref guard{*packet};
        if (packet->stream_index == index)
            transcoder.push(*packet, sink);
    }
    transcoder.finish(sink);
    muxer.finish();
}

class AudioTranscodeTrackTest : public testing::Test {
protected:
    std::filesystem::path path(const char* name) const { return m_folder.path() / name; }

private:
    test::TempFolder m_folder;
};

TEST_F(AudioTranscodeTrackTest, KeepsLengthPitchAndLevel) {
    MediaSpec spec{.format = "mp4", .seconds = 2, .audio = {{.codec = "aac"}}};
    spec.muxerOptions = {{"movie_timescale", "44100"}};
    BOXLIFT_MAKE_MEDIA(path("in.mp4"), spec);
    transcode(path("in.mp4"), path("out.m4a"));
    const auto audio = test::decodeAudio(path("out.m4a"));
    EXPECT_EQ(audio.sampleRate, 44100);
    EXPECT_EQ(audio.length(), 88200U);
    EXPECT_NEAR(test::toneFrequency(audio), 440, 0.5);
    EXPECT_NEAR(test::toneLevel(audio, 440), 0.5, 0.01);
}

TEST_F(AudioTranscodeTrackTest, ShiftsNothing) {
    MediaSpec spec{.format = "wav", .audio = {{.codec = "pcm_s16le"}}};
    spec.audio[0].signal = test::Signal::impulses;
    spec.audio[0].impulses = {30'000};
    BOXLIFT_MAKE_MEDIA(path("in.wav"), spec);
    transcode(path("in.wav"), path("out.m4a"));
    const auto audio = test::decodeAudio(path("out.m4a"));
    EXPECT_EQ(audio.length(), 44100U);
    EXPECT_EQ(test::peakSample(audio), 30'000U);
}

TEST_F(AudioTranscodeTrackTest, KeepsTheLowFrequenciesOfSideSurround) {
    MediaSpec spec{.format = "mov", .audio = {{.codec = "ac3", .sampleRate = 48000}}};
    spec.audio[0].layout = "5.1(side)";
    spec.audio[0].frequencies = {500, 600, 700, 60, 800, 900};
    spec.audio[0].amplitude = 0.3;
    BOXLIFT_MAKE_MEDIA(path("in.mov"), spec);
    ASSERT_EQ(test::probe(path("in.mov")).audio().layout, "5.1(side)");
    transcode(path("in.mov"), path("out.m4a"));
    const auto audio = test::decodeAudio(path("out.m4a"));
    EXPECT_EQ(audio.layout, "5.1");
    ASSERT_EQ(audio.channels, 6);
    for (int channel = 0; channel < 6; ++channel) {
        const double frequency = spec.audio[0].frequencies[static_cast<std::size_t>(channel)];
        EXPECT_NEAR(test::toneLevel(audio, frequency, {.channel = channel, .begin = 4800}), 0.3,
                    0.03)
            << channel;
    }
}

TEST_F(AudioTranscodeTrackTest, KeepsALateStartLate) {
    MediaSpec spec{.seconds = 3, .video = {{.codec = "mpeg4"}}};
    spec.audio = {{.codec = "pcm_s16le", .startSeconds = 1.5}};
    BOXLIFT_MAKE_MEDIA(path("in.mov"), spec);
    transcode(path("in.mov"), path("out.m4a"));
    const auto range =
        test::openAsset(path("out.m4a"))->loadTracks(MediaType::audio).at(0)->timeRange();
    EXPECT_NEAR(range.start.seconds(), 1.5, 0.03);
    EXPECT_NEAR(range.end().seconds(), 4.5, 0.001);
}

TEST_F(AudioTranscodeTrackTest, FillsAGapSoThatWhatFollowsStaysInPlace) {
    MediaSpec spec{.format = "mp4", .seconds = 3, .audio = {{}}};
    spec.audio[0].gap = test::Gap{1, 1};
    BOXLIFT_MAKE_MEDIA(path("in.mp4"), spec);
    transcode(path("in.mp4"), path("out.m4a"));
    const auto audio = test::decodeAudio(path("out.m4a"));
    EXPECT_GT(test::rms(audio, {.begin = 10'000, .end = 40'000}), 0.3);
    EXPECT_LT(test::rms(audio, {.begin = 50'000, .end = 84'000}), 0.01);
    EXPECT_GT(test::rms(audio, {.begin = 95'000, .end = 120'000}), 0.3);
}

TEST_F(AudioTranscodeTrackTest, BringsHighSampleRatesDown) {
    MediaSpec spec{.format = "wav", .audio = {{.codec = "pcm_s24le", .sampleRate = 192000}}};
    BOXLIFT_MAKE_MEDIA(path("in.wav"), spec);
    transcode(path("in.wav"), path("out.m4a"));
    const auto audio = test::decodeAudio(path("out.m4a"));
    EXPECT_EQ(audio.sampleRate, 48000);
    EXPECT_NEAR(static_cast<double>(audio.length()), 48000, 1);
    EXPECT_NEAR(test::toneLevel(audio, 440), 0.5, 0.01);
}

} // namespace

} // namespace boxlift::media
