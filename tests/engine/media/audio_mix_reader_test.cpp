#include "engine/media/audio_mix_reader.h"

#include <chrono>
#include <cmath>
#include <future>
#include <gtest/gtest.h>

#include "engine/media/audio_files.h"
#include "engine/media/file_composition.h"
#include "support/media_decode.h"
#include "support/temp_folder.h"

namespace boxlift::media {

namespace {

using namespace std::chrono_literals;
using test::AudioSpec;
using test::MediaSpec;
using test::Signal;
using Samples = std::vector<std::int16_t>;
using Status = AssetReader::Status;
using Tracks = std::vector<std::shared_ptr<const AssetTrack>>;

AudioSpec pcm(double amplitude = 0.5) {
    AudioSpec audio;
    audio.codec = "pcm_s16le";
    audio.amplitude = amplitude;
    return audio;
}

/// A file's audio, about to be read.
struct Reading {
    explicit Reading(const std::filesystem::path& path, const LinearPcmSettings& wanted = {})
        : asset(test::openAsset(path)), tracks(asset->loadTracks(MediaType::audio)), reader(asset),
          settings(wanted) {}

    bool start() {
        if (!reader.canAddAudioMix(tracks, settings))
            return false;
        reader.addAudioMix(tracks, settings);
        return reader.startReading();
    }
    /// All of it; an empty vector and a failure of the test when that is not to be had.
    Samples all() {
        EXPECT_TRUE(start());
        Samples samples = test::readAll(reader);
        EXPECT_EQ(reader.status(), Status::completed);
        EXPECT_EQ(reader.error(), nullptr);
        return samples;
    }

    std::shared_ptr<const FileAsset> asset;
    Tracks tracks;
    AudioMixReader reader;
    LinearPcmSettings settings;
};

/// The largest absolute value of one channel between two positions.
int peak(const Samples& samples, std::size_t channel, std::size_t begin, std::size_t end) {
    int highest = 0;
    for (std::size_t i = begin; i < end && i * 2 + channel < samples.size(); ++i)
        highest = std::max(highest, std::abs(int{samples[i * 2 + channel]}));
    return highest;
}

class AudioMixReaderTest : public testing::Test {
protected:
    std::filesystem::path path(const char* name) const { return m_folder.path() / name; }

private:
    test::TempFolder m_folder;
};

TEST_F(AudioMixReaderTest, PassesSixteenBitStereoBitByBit) {
    MediaSpec spec{.format = "wav", .seconds = 2, .audio = {pcm()}};
    spec.audio[0].signal = Signal::noise;
    BOXLIFT_MAKE_MEDIA(path("in.wav"), spec);
    const auto expected = test::decodeAudio(path("in.wav"));
    const Samples samples = Reading(path("in.wav")).all();
    ASSERT_EQ(samples.size(), expected.samples.size());
    ASSERT_EQ(samples.size(), 2 * 2 * 44100U);
    for (std::size_t i = 0; i < samples.size(); ++i)
        ASSERT_EQ(samples[i], std::lround(expected.samples[i] * 32768)) << i;
}

TEST_F(AudioMixReaderTest, BringsMonoToBothSidesAtTheSameLevel) {
    MediaSpec spec{.format = "wav", .audio = {pcm()}};
    spec.audio[0].layout = "mono";
    BOXLIFT_MAKE_MEDIA(path("in.wav"), spec);
    const Samples samples = Reading(path("in.wav")).all();
    EXPECT_NEAR(peak(samples, 0, 0, 44100), 16384, 40);
    EXPECT_NEAR(peak(samples, 1, 0, 44100), 16384, 40);
}

TEST_F(AudioMixReaderTest, TakesLowAndHighSampleRates) {
    for (const int rate : {8000, 192000}) {
        MediaSpec spec{.format = "wav", .audio = {pcm()}};
        spec.audio[0].layout = "mono";
        spec.audio[0].sampleRate = rate;
        BOXLIFT_MAKE_MEDIA(path("in.wav"), spec);
        const Samples samples = Reading(path("in.wav")).all();
        EXPECT_NEAR(static_cast<double>(samples.size()), 88200, 2) << rate;
        EXPECT_NEAR(peak(samples, 0, 1000, 43000), 16384, 160) << rate;
    }
}

TEST_F(AudioMixReaderTest, MakesLateAudioBeginWithSilence) {
    MediaSpec spec{.seconds = 3, .video = {{.codec = "mpeg4"}}, .audio = {pcm()}};
    spec.audio[0].startSeconds = 1.5;
    BOXLIFT_MAKE_MEDIA(path("in.mov"), spec);
    const Samples samples = Reading(path("in.mov")).all();
    EXPECT_EQ(peak(samples, 0, 0, 66150), 0);
    EXPECT_GT(peak(samples, 0, 66150, 66150 + 200), 15000);
}

TEST_F(AudioMixReaderTest, FillsGapsWithSilence) {
    MediaSpec spec{.format = "mp4", .seconds = 3, .audio = {{}}};
    spec.audio[0].gap = test::Gap{1, 1};
    BOXLIFT_MAKE_MEDIA(path("in.mp4"), spec);
    const Samples samples = Reading(path("in.mp4")).all();
    EXPECT_GT(peak(samples, 0, 20000, 30000), 15000);
    EXPECT_EQ(peak(samples, 0, 48000, 85000), 0);
    EXPECT_GT(peak(samples, 0, 92000, 100000), 15000);
}

TEST_F(AudioMixReaderTest, CutsPrimingAndPaddingOfAac) {
    for (const char* format : {"mp4", "mov", "ipod"}) {
        MediaSpec spec{.format = format, .audio = {{}}};
        spec.audio[0].signal = Signal::impulses;
        spec.audio[0].impulses = {12345};
        spec.muxerOptions = {{"movie_timescale", "44100"}};
        BOXLIFT_MAKE_MEDIA(path("in.mp4"), spec);
        const Samples samples = Reading(path("in.mp4")).all();
        ASSERT_EQ(samples.size(), 2 * 44100U) << format;
        const auto highest = std::max_element(samples.begin(), samples.end());
        EXPECT_EQ((highest - samples.begin()) / 2, 12345) << format;
    }
}

TEST_F(AudioMixReaderTest, SumsTracksAndClipsThem) {
    MediaSpec spec{.seconds = 2, .audio = {pcm(0.9), pcm(0.9), pcm(0.9)}};
    spec.audio[1].seconds = 1;
    spec.audio[2].seconds = 1;
    BOXLIFT_MAKE_MEDIA(path("in.mov"), spec);
    Reading reading(path("in.mov"));
    ASSERT_EQ(reading.tracks.size(), 3U);
    const Samples samples = reading.all();
    ASSERT_EQ(samples.size(), 2 * 88200U);
    // Where three add up the tone is cut off at the limits, and keeps its sign.
    EXPECT_EQ(*std::max_element(samples.begin(), samples.begin() + 80000), 32767);
    EXPECT_EQ(*std::min_element(samples.begin(), samples.begin() + 80000), -32768);
    for (std::size_t i = 1; i < 40000; ++i)
        ASSERT_LT(std::abs(samples[2 * i] - samples[2 * i - 2]), 8000) << i;
    EXPECT_NEAR(peak(samples, 0, 50000, 80000), 29491, 60);
}

TEST_F(AudioMixReaderTest, MixesToOtherRatesAndToOneChannel) {
    MediaSpec spec{.format = "wav", .audio = {pcm()}};
    BOXLIFT_MAKE_MEDIA(path("in.wav"), spec);
    Reading reading(path("in.wav"), {.sampleRate = 48000, .channels = 1});
    ASSERT_TRUE(reading.start());
    std::size_t frames = 0;
    while (const auto buffer = reading.reader.copyNextSampleBuffer()) {
        EXPECT_EQ(buffer->channels, 1);
        frames += buffer->frameCount();
    }
    EXPECT_NEAR(static_cast<double>(frames), 48000, 1);
}

TEST_F(AudioMixReaderTest, ReadsTheTracksOfAComposition) {
    MediaSpec spec{.video = {{.codec = "mpeg4"}}, .audio = {pcm()}};
    BOXLIFT_MAKE_MEDIA(path("in.mov"), spec);
    const auto asset = test::openAsset(path("in.mov"));
    const auto source = asset->loadTracks(MediaType::audio).at(0);
    const auto composition = std::make_shared<FileComposition>();
    composition->addMutableTrack(MediaType::audio, MutableComposition::persistentTrackIdInvalid)
        ->insertTimeRange(source->timeRange(), source, source->timeRange().start);
    AudioMixReader reader(composition);
    const Tracks tracks = composition->loadTracks(MediaType::audio);
    ASSERT_TRUE(reader.canAddAudioMix(tracks, {}));
    reader.addAudioMix(tracks, {});
    ASSERT_TRUE(reader.startReading());
    EXPECT_EQ(test::readAll(reader).size(), 88200U);
}

TEST_F(AudioMixReaderTest, RefusesSettingsThatItCannotDeliver) {
    BOXLIFT_MAKE_MEDIA(path("in.wav"), (MediaSpec{.format = "wav", .audio = {pcm()}}));
    const Reading reading(path("in.wav"));
    EXPECT_TRUE(reading.reader.canAddAudioMix(reading.tracks, {}));
    for (const LinearPcmSettings& settings : {LinearPcmSettings{.isFloat = true},
                                              {.isBigEndian = true},
                                              {.isNonInterleaved = true},
                                              {.bitDepth = 24},
                                              {.channels = 6},
                                              {.channels = 0},
                                              {.sampleRate = 0}})
        EXPECT_FALSE(reading.reader.canAddAudioMix(reading.tracks, settings));
}

TEST_F(AudioMixReaderTest, RefusesTracksThatAreNotItsOwnAudio) {
    MediaSpec spec{.video = {{.codec = "mpeg4"}}, .audio = {pcm()}};
    BOXLIFT_MAKE_MEDIA(path("in.mov"), spec);
    BOXLIFT_MAKE_MEDIA(path("other.mov"), spec);
    const Reading reading(path("in.mov"));
    const Reading other(path("other.mov"));
    EXPECT_FALSE(reading.reader.canAddAudioMix({}, {}));
    EXPECT_FALSE(reading.reader.canAddAudioMix(other.tracks, {}));
    EXPECT_FALSE(reading.reader.canAddAudioMix(reading.asset->loadTracks(MediaType::video), {}));
}

TEST_F(AudioMixReaderTest, ReportsASourceThatWasCutShort) {
    MediaSpec spec{.format = "aiff", .seconds = 20, .audio = {pcm()}};
    spec.audio[0].codec = "pcm_s16be";
    BOXLIFT_MAKE_MEDIA(path("in.aiff"), spec);
    test::truncateFile(path("in.aiff"), 0.5);
    Reading reading(path("in.aiff"));
    ASSERT_TRUE(reading.start());
    const Samples samples = test::readAll(reading.reader);
    EXPECT_LE(samples.size(), 2 * 441'000U);
    EXPECT_EQ(reading.reader.status(), Status::failed);
    EXPECT_EQ(test::errorKind(reading.reader.error()), ErrorKind::sourceEndsEarly);
}

TEST_F(AudioMixReaderTest, ReportsAMovieWhoseSamplesAreMissingBeforeItReadsThem) {
    MediaSpec spec{.format = "mp4", .seconds = 20, .audio = {{}}};
    spec.muxerOptions = {{"movflags", "+faststart"}};
    BOXLIFT_MAKE_MEDIA(path("in.mp4"), spec);
    test::truncateFile(path("in.mp4"), 0.7);
    Reading reading(path("in.mp4"));
    EXPECT_FALSE(reading.start());
    EXPECT_EQ(reading.reader.status(), Status::failed);
    EXPECT_EQ(test::errorKind(reading.reader.error()), ErrorKind::sourceEndsEarly);
}

TEST_F(AudioMixReaderTest, StopsAtOnceWhenItIsCancelled) {
    MediaSpec spec{.format = "wav", .seconds = 30, .audio = {pcm()}};
    BOXLIFT_MAKE_MEDIA(path("in.wav"), spec);
    Reading reading(path("in.wav"));
    ASSERT_TRUE(reading.start());
    ASSERT_TRUE(reading.reader.copyNextSampleBuffer().has_value());
    auto rest = std::async(std::launch::async, [&] { return test::readAll(reading.reader); });
    reading.reader.cancelReading();
    ASSERT_EQ(rest.wait_for(5s), std::future_status::ready);
    EXPECT_LT(rest.get().size(), 30 * 88200U);
    EXPECT_EQ(reading.reader.status(), Status::cancelled);
    EXPECT_EQ(reading.reader.error(), nullptr);
    EXPECT_FALSE(reading.reader.copyNextSampleBuffer().has_value());
}

TEST_F(AudioMixReaderTest, DoesNotStartOnceItWasCancelled) {
    BOXLIFT_MAKE_MEDIA(path("in.wav"), (MediaSpec{.format = "wav", .audio = {pcm()}}));
    Reading reading(path("in.wav"));
    reading.reader.cancelReading();
    EXPECT_FALSE(reading.start());
    EXPECT_EQ(reading.reader.status(), Status::cancelled);
}

TEST_F(AudioMixReaderTest, StaysCompletedWhenItIsCancelledAfterwards) {
    BOXLIFT_MAKE_MEDIA(path("in.wav"), (MediaSpec{.format = "wav", .audio = {pcm()}}));
    Reading reading(path("in.wav"));
    EXPECT_EQ(reading.all().size(), 88200U);
    reading.reader.cancelReading();
    EXPECT_EQ(reading.reader.status(), Status::completed);
}

} // namespace

} // namespace boxlift::media
