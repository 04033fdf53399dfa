#include "support/media_decode.h"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>

#include "support/media_generator.h"
#include "support/media_measure.h"
#include "support/media_pattern.h"
#include "support/temp_folder.h"

namespace boxlift::test {
namespace {

class MediaDecode : public ::testing::Test {
protected:
    std::filesystem::path make(const MediaSpec& spec) {
        std::filesystem::path path = m_folder.path() / "clip";
        makeMedia(path, spec);
        return path;
    }

    TempFolder m_folder;
};

TEST_F(MediaDecode, ReturnsStoredSamplesUnchanged) {
    const AudioSpec spec = {.codec = "pcm_f32le", .frequencies = {440, 1000}};
    const DecodedAudio audio = decodeAudio(make({.seconds = 0.1, .audio = {spec}}));
    ASSERT_EQ(audio.length(), 4410U);
    for (std::size_t sample = 0; sample < audio.length(); ++sample) {
        const auto index = static_cast<std::int64_t>(sample);
        ASSERT_FLOAT_EQ(audio.at(sample, 0), static_cast<float>(signalValue(spec, 0, index)));
        ASSERT_FLOAT_EQ(audio.at(sample, 1), static_cast<float>(signalValue(spec, 1, index)));
    }
}

TEST_F(MediaDecode, ClipsAacToItsEditedLength) {
    const DecodedAudio audio = decodeAudio(make({.audio = {{}}}));
    EXPECT_EQ(audio.length(), 44100U);
    EXPECT_EQ(audio.startSeconds, 0);
}

TEST_F(MediaDecode, KeepsAacInPlace) {
    const AudioSpec spec = {
        .signal = Signal::impulses, .amplitude = 0.9, .impulses = {10000}, .bitRate = 256000};
    for (const std::string format : {"mov", "mp4", "ipod"}) {
        const DecodedAudio audio = decodeAudio(make({.format = format, .audio = {spec}}));
        EXPECT_EQ(peakSample(audio), 10000U) << format;
    }
}

TEST_F(MediaDecode, DecodesTheTrackWithTheGivenNumber) {
    const auto path =
        make({.video = {{}}, .audio = {{}, {.sampleRate = 48000, .frequencies = {1000}}}});
    EXPECT_NEAR(toneFrequency(decodeAudio(path, 0)), 440, 1);
    EXPECT_NEAR(toneFrequency(decodeAudio(path, 1)), 1000, 1);
    EXPECT_EQ(decodeAudio(path, 1).sampleRate, 48000);
    EXPECT_THROW(decodeAudio(path, 2), std::out_of_range);
}

TEST_F(MediaDecode, TakesNoCoverForVideo) {
    const auto path = make({.format = "ipod", .audio = {{}}, .cover = CoverSpec{}});
    EXPECT_THROW(decodeVideo(path), std::out_of_range);
}

TEST_F(MediaDecode, ReturnsStoredLumaUnchanged) {
    const auto exact = decodeVideo(make({.format = "matroska", .video = {{.codec = "ffv1"}}}));
    const auto deep = decodeVideo(
        make({.format = "matroska", .video = {{.codec = "ffv1", .pixelFormat = "yuv420p10le"}}}));
    ASSERT_EQ(exact.size(), 25U);
    ASSERT_EQ(deep.size(), 25U);
    EXPECT_EQ(exact[7].luma, deep[7].luma);
    EXPECT_EQ(exact[7].luma.size(), 160U * 120U);
}

TEST_F(MediaDecode, BringsFullRangeToLimited) {
    const auto limited = decodeVideo(make({.format = "mov", .video = {{.codec = "ffv1"}}}));
    const auto full = decodeVideo(
        make({.format = "mov",
              .video = {{.pixelFormat = "yuvj420p", .encoderOptions = {{"crf", "1"}}}}}));
    EXPECT_GT(ssim(limited.at(7), full.at(7)), 0.999);
}

TEST_F(MediaDecode, StopsAtTheAskedNumberOfFrames) {
    EXPECT_EQ(decodeVideo(make({.video = {{}}}), {.maxFrames = 3}).size(), 3U);
}

TEST_F(MediaDecode, ScalesPictures) {
    const auto large = make({.video = {{.width = 320, .height = 240}}});
    const auto frames = decodeVideo(large, {.maxFrames = 2, .width = 160, .height = 120});
    const auto small = decodeVideo(make({.video = {{}}}), {.maxFrames = 2});
    ASSERT_EQ(frames.at(1).width, 160);
    ASSERT_EQ(frames.at(1).luma.size(), small.at(1).luma.size());
    EXPECT_EQ(frameNumber(frames.at(1)), 1);
}

TEST_F(MediaDecode, FailsOnAFileThatIsNotMedia) {
    const auto path = writeFile(m_folder.path() / "text", "not media at all");
    EXPECT_THROW(decodeAudio(path), std::runtime_error);
    EXPECT_THROW(decodeVideo(m_folder.path() / "missing"), std::runtime_error);
}

} // namespace
} // namespace boxlift::test
