#include "engine/media/time.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace boxlift::media {

TEST(Time, IsInvalidUntilItIsGivenAValue) {
    EXPECT_FALSE(Time().isValid());
    EXPECT_TRUE(Time::zero().isValid());
    EXPECT_TRUE(std::isnan(Time().seconds()));
}

TEST(Time, IsExactForUsualFrameAndSampleRates) {
    for (const std::int64_t rate : {24, 25, 30, 50, 60, 1000, 44100, 48000, 90000, 96000}) {
        const Time step = Time::fromRate(1, rate);
        EXPECT_EQ(step.ticks() * rate, Time::ticksPerSecond) << rate;
        EXPECT_EQ(step.toRate(rate), 1) << rate;
    }
    // 30000/1001 pictures a second: thirty thousand of them last 1001 s to the tick.
    const Time picture = Time::fromRate(1001, 30000);
    EXPECT_EQ(picture.ticks() * 30000, 1001 * Time::ticksPerSecond);
}

TEST(Time, RoundsToTheNearestOnBothSidesOfZero) {
    EXPECT_EQ(Time::fromSeconds(1.5 / Time::ticksPerSecond).ticks(), 2);
    EXPECT_EQ(Time::fromSeconds(-1.5 / Time::ticksPerSecond).ticks(), -2);
    EXPECT_EQ(Time::fromTicks(Time::ticksPerSecond * 16 / 10).toRate(1), 2);
    EXPECT_EQ(Time::fromTicks(Time::ticksPerSecond * -16 / 10).toRate(1), -2);
    EXPECT_EQ(Time::fromTicks(Time::ticksPerSecond * 14 / 10).toRate(1), 1);
    EXPECT_EQ(Time::fromTicks(Time::ticksPerSecond * -14 / 10).toRate(1), -1);
}

TEST(Time, CountsYearsOfTicksWithoutOverflow) {
    constexpr std::int64_t year = 365LL * 24 * 3600;
    const Time time = Time::fromRate(400 * year * 90000, 90000);
    EXPECT_EQ(time.ticks(), 400 * year * Time::ticksPerSecond);
    EXPECT_EQ(time.toRate(90000), 400 * year * 90000);
}

TEST(Time, OfSecondsThatNoClockHasIsInvalid) {
    EXPECT_FALSE(Time::fromSeconds(std::numeric_limits<double>::quiet_NaN()).isValid());
    EXPECT_FALSE(Time::fromSeconds(std::numeric_limits<double>::infinity()).isValid());
    EXPECT_FALSE(Time::fromSeconds(-std::numeric_limits<double>::infinity()).isValid());
    EXPECT_FALSE(Time::fromSeconds(1e11).isValid());
    EXPECT_TRUE(Time::fromSeconds(1e9).isValid());
}

TEST(Time, AddsAndSubtracts) {
    const Time one = Time::fromSeconds(1);
    const Time half = Time::fromSeconds(0.5);
    EXPECT_EQ((one + half).seconds(), 1.5);
    EXPECT_EQ((half - one).seconds(), -0.5);
}

TEST(Time, OfAnInvalidPartIsInvalid) {
    EXPECT_FALSE((Time() + Time::zero()).isValid());
    EXPECT_FALSE((Time::zero() + Time()).isValid());
    EXPECT_FALSE((Time() - Time::zero()).isValid());
    EXPECT_FALSE((Time::zero() - Time()).isValid());
}

TEST(Time, BeyondItsRangeIsInvalid) {
    const Time far = Time::fromTicks(std::numeric_limits<std::int64_t>::max() - 1);
    EXPECT_FALSE((far + far).isValid());
    EXPECT_FALSE((Time::zero() - far - far).isValid());
    EXPECT_TRUE((far + Time::fromTicks(1)).isValid());
}

TEST(Time, IsOrderedWithTheInvalidOneFirst) {
    EXPECT_LT(Time::zero(), Time::fromTicks(1));
    EXPECT_LT(Time::fromTicks(-1), Time::zero());
    EXPECT_LT(Time(), Time::fromSeconds(-1e9));
}

TEST(TimeRange, EndsAfterItsDuration) {
    const TimeRange range{Time::fromSeconds(2), Time::fromSeconds(3)};
    EXPECT_EQ(range.end(), Time::fromSeconds(5));
    EXPECT_FALSE((TimeRange{Time::zero(), Time()}).end().isValid());
}

} // namespace boxlift::media
