#include "support/media_measure.h"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>

#include "support/media_pattern.h"

namespace boxlift::test {
namespace {

DecodedAudio play(const AudioSpec& spec, double seconds) {
    DecodedAudio audio{.sampleRate = spec.sampleRate, .channels = 2};
    const auto length = std::llround(seconds * spec.sampleRate);
    for (std::int64_t sample = 0; sample < length; ++sample) {
        audio.samples.push_back(static_cast<float>(signalValue(spec, 0, sample)));
        audio.samples.push_back(static_cast<float>(signalValue(spec, 1, sample)));
    }
    return audio;
}

LumaFrame draw(int width, int height, std::int64_t number, double seconds) {
    LumaFrame frame{.width = width, .height = height};
    const auto size = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    frame.luma.resize(size);
    std::vector<std::uint8_t> chroma(size);
    drawPattern(
        {width, height, frame.luma.data(), chroma.data(), chroma.data(), width, width, width},
        number, seconds);
    return frame;
}

TEST(MediaMeasure, FindsTheLevelOfATone) {
    const DecodedAudio audio = play({.frequencies = {441, 1000}, .amplitude = 0.25}, 1);
    EXPECT_NEAR(toneLevel(audio, 441), 0.25, 1e-4);
    EXPECT_NEAR(toneLevel(audio, 1000), 0, 1e-3);
    EXPECT_NEAR(toneLevel(audio, 1000, {.channel = 1}), 0.25, 1e-4);
    EXPECT_NEAR(toneLevel(audio, 441, {.begin = 1000, .end = 2000}), 0.25, 1e-3);
}

TEST(MediaMeasure, FindsTheFrequencyOfATone) {
    const DecodedAudio audio = play({.frequencies = {440, 1234.5}}, 1);
    EXPECT_NEAR(toneFrequency(audio), 440, 0.01);
    EXPECT_NEAR(toneFrequency(audio, {.channel = 1}), 1234.5, 0.05);
    EXPECT_EQ(toneFrequency(play({.signal = Signal::silence}, 1)), 0);
}

TEST(MediaMeasure, FindsTheEffectiveValue) {
    const DecodedAudio audio = play({.frequencies = {441}, .amplitude = 0.5}, 1);
    EXPECT_NEAR(rms(audio), 0.5 / std::sqrt(2.0), 1e-4);
    EXPECT_EQ(rms(play({.signal = Signal::silence}, 1)), 0);
    EXPECT_EQ(rms(audio, {.begin = 44100}), 0);
}

TEST(MediaMeasure, FindsAnImpulse) {
    const DecodedAudio audio =
        play({.signal = Signal::impulses, .amplitude = -0.5, .impulses = {100, 5000}}, 1);
    EXPECT_EQ(peakSample(audio), 100U);
    EXPECT_EQ(peakSample(audio, {.begin = 101}), 5000U);
    EXPECT_THROW(peakSample(audio, {.begin = 44100}), std::invalid_argument);
}

TEST(MediaMeasure, FindsEqualPicturesEqual) {
    const LumaFrame frame = draw(160, 120, 5, 0.2);
    EXPECT_DOUBLE_EQ(ssim(frame, frame), 1);
}

TEST(MediaMeasure, FindsPicturesLessAlikeTheMoreTheyDiffer) {
    const LumaFrame frame = draw(160, 120, 0, 0);
    LumaFrame dimmer = frame;
    for (std::uint8_t& value : dimmer.luma) {
        value = static_cast<std::uint8_t>(value - 4);
    }
    const double dimmed = ssim(frame, dimmer);
    const double moved = ssim(frame, draw(160, 120, 0, 0.04));
    EXPECT_LT(dimmed, 1);
    EXPECT_GT(dimmed, 0.98);
    EXPECT_LT(moved, 0.97);
    EXPECT_LT(ssim(frame, draw(160, 120, 12, 0.48)), moved);
}

TEST(MediaMeasure, RefusesPicturesThatCannotBeCompared) {
    EXPECT_THROW(ssim(draw(160, 120, 0, 0), draw(120, 160, 0, 0)), std::invalid_argument);
    EXPECT_THROW(ssim(draw(4, 4, 0, 0), draw(4, 4, 0, 0)), std::invalid_argument);
}

TEST(MediaMeasure, ReadsThePicturesNumberAtAnySize) {
    for (const std::int64_t number : {0, 1, 24, 40000, 65535}) {
        EXPECT_EQ(frameNumber(draw(160, 120, number, 1)), number);
        EXPECT_EQ(frameNumber(draw(1920, 1080, number, 1)), number);
        EXPECT_EQ(frameNumber(draw(72, 128, number, 1)), number);
    }
}

} // namespace
} // namespace boxlift::test
