#include "engine/media/audio_aligner.h"

#include <cmath>
#include <gtest/gtest.h>

namespace boxlift::media {

namespace {

constexpr int rate = 48000;

Time seconds(double value) {
    return Time::fromSeconds(value);
}

AudioAligner begun(AudioAligner::LongJumps jumps = AudioAligner::LongJumps::kept) {
    AudioAligner aligner(jumps);
    const auto first = aligner.place(Time::zero(), rate, rate);
    EXPECT_EQ(first.start, Time::zero());
    return aligner;
}

TEST(AudioAligner, PutsTheFirstStretchExactlyWhereItIsStamped) {
    AudioAligner aligner(AudioAligner::LongJumps::kept);
    const auto placement = aligner.place(seconds(0.003), 1024, rate);
    EXPECT_EQ(placement.skip, 0);
    EXPECT_EQ(placement.start, seconds(0.003));
}

TEST(AudioAligner, CutsOffWhatLiesBeforeZero) {
    AudioAligner aligner(AudioAligner::LongJumps::kept);
    EXPECT_EQ(aligner.place(Time::fromRate(-1500, rate), 1024, rate).skip, 1024);
    const auto second = aligner.place(Time::fromRate(-476, rate), 1024, rate);
    EXPECT_EQ(second.skip, 476);
    EXPECT_EQ(second.start, Time::zero());
    const auto third = aligner.place(Time::fromRate(548, rate), 1024, rate);
    EXPECT_EQ(third.skip, 0);
    EXPECT_FALSE(third.start.has_value());
}

TEST(AudioAligner, IgnoresJitterOfLessThanFiveMilliseconds) {
    AudioAligner aligner = begun();
    for (const double jitter : {0.0049, -0.0049}) {
        const auto placement = aligner.place(seconds(1 + jitter), 0, rate);
        EXPECT_EQ(placement.skip, 0);
        EXPECT_FALSE(placement.start.has_value());
    }
}

TEST(AudioAligner, OpensAGapWhereTheStampsDo) {
    AudioAligner aligner = begun();
    const auto placement = aligner.place(seconds(1.5), 1024, rate);
    EXPECT_EQ(placement.skip, 0);
    EXPECT_EQ(placement.start, seconds(1.5));
}

TEST(AudioAligner, TrimsAnOverlapOffTheLaterStretch) {
    AudioAligner aligner = begun();
    EXPECT_EQ(aligner.place(seconds(0.99), 960, rate).skip, 480);
    EXPECT_EQ(aligner.place(seconds(0.5), 960, rate).skip, 960);
    const auto next = aligner.place(seconds(1.01), 960, rate);
    EXPECT_EQ(next.skip, 0);
    EXPECT_FALSE(next.start.has_value());
}

TEST(AudioAligner, LetsUnstampedAudioFollow) {
    AudioAligner aligner = begun();
    const auto placement = aligner.place(Time(), 1024, rate);
    EXPECT_EQ(placement.skip, 0);
    EXPECT_FALSE(placement.start.has_value());
}

TEST(AudioAligner, CountsOnWhenTheSampleRateChanges) {
    AudioAligner aligner = begun();
    EXPECT_FALSE(aligner.place(seconds(1), 44100, 44100).start.has_value());
    EXPECT_FALSE(aligner.place(seconds(2), 1024, rate).start.has_value());
    EXPECT_TRUE(aligner.place(seconds(3), 1024, rate).start.has_value());
}

TEST(AudioAligner, KeepsLongGapsOfStampsThatAreTrusted) {
    AudioAligner aligner = begun();
    EXPECT_EQ(aligner.place(seconds(3600), 1024, rate).start, seconds(3600));
}

TEST(AudioAligner, BridgesLongJumpsOfStampsThatAreNot) {
    AudioAligner aligner = begun(AudioAligner::LongJumps::bridged);
    EXPECT_FALSE(aligner.place(seconds(95000), rate, rate).start.has_value());
    EXPECT_FALSE(aligner.place(seconds(95001), rate, rate).start.has_value());
    const auto back = aligner.place(seconds(3), rate, rate);
    EXPECT_EQ(back.skip, 0);
    EXPECT_FALSE(back.start.has_value());
}

TEST(AudioAligner, TakesGarbageForMissingStamps) {
    AudioAligner aligner = begun();
    const Time garbage = Time::fromTicks(std::numeric_limits<std::int64_t>::max());
    const auto placement = aligner.place(garbage, 1024, rate);
    EXPECT_EQ(placement.skip, 0);
    EXPECT_FALSE(placement.start.has_value());
}

/// An hour of frames whose clock runs 100 ppm fast or slow, stamped in milliseconds: the samples
/// that come out may never be further from their stamps than 5 ms and the stamps' own coarseness.
void expectNoDrift(double clock) {
    AudioAligner aligner(AudioAligner::LongJumps::kept);
    std::int64_t position = 0;
    for (std::int64_t frame = 0; frame < 3600 * 50; ++frame) {
        const double stamp = std::round(static_cast<double>(frame) * 20 * clock) / 1000;
        const auto placement = aligner.place(seconds(stamp), 960, rate);
        if (placement.start)
            position = placement.start->toRate(rate);
        const double placed = static_cast<double>(position - placement.skip) / rate;
        ASSERT_NEAR(placed, stamp, 0.0051) << "frame " << frame;
        position += 960 - placement.skip;
    }
}

TEST(AudioAligner, NeverStraysFromCoarseStampsOverAnHour) {
    expectNoDrift(1);
    expectNoDrift(1.0001);
    expectNoDrift(0.9999);
}

} // namespace

} // namespace boxlift::media
