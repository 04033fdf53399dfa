#include "engine/media/audio_stretch.h"
#include "engine/media/stretch_plan.h"

#include <cmath>
#include <gtest/gtest.h>

namespace boxlift::media {

namespace {

constexpr int rate = 44100;

StretchPlan planFor(double seconds, unsigned cores) {
    return planStretches(Time::fromSeconds(seconds), rate, cores);
}

bool isSerial(const StretchPlan& plan) {
    return plan.workers == 1 && plan.length > std::int64_t{1} << 60;
}

/// The first one, and those like the others.
double stretches(double seconds, const StretchPlan& plan) {
    const double rest = seconds * rate - static_cast<double>(plan.first);
    return 1 + rest / static_cast<double>(plan.length);
}

/// What the worker of the first stretches encodes, and another one, in samples.
double difference(double seconds, const StretchPlan& plan) {
    const double lead = AudioStretch::lead;
    const double rounds = std::round(stretches(seconds, plan) / plan.workers);
    const double others = static_cast<double>(plan.length) + lead;
    return static_cast<double>(plan.first) + (rounds - 1) * others - rounds * others;
}

TEST(StretchPlan, IsOneStretchForWhatIsShortOrUnknownAndForOneCore) {
    EXPECT_TRUE(isSerial(planFor(20, 8)));
    EXPECT_TRUE(isSerial(planFor(110, 8)));
    EXPECT_TRUE(isSerial(planFor(0, 8)));
    EXPECT_TRUE(isSerial(planFor(-5, 8)));
    EXPECT_TRUE(isSerial(planFor(3600, 1)));
    EXPECT_TRUE(isSerial(planFor(3600, 0)));
    EXPECT_TRUE(isSerial(planStretches(Time(), rate, 8)));
}

TEST(StretchPlan, GivesEachWorkerAsManyStretches) {
    for (const double seconds : {130.0, 200.0, 600.0, 1300.0, 3600.0, 36'000.0})
        for (const unsigned cores : {2U, 3U, 8U}) {
            const StretchPlan plan = planFor(seconds, cores);
            const double rounds = stretches(seconds, plan) / plan.workers;
            EXPECT_LE(rounds, std::ceil(rounds)) << seconds;
            EXPECT_GT(rounds, std::ceil(rounds) - 0.1) << seconds << " s, " << cores;
        }
}

TEST(StretchPlan, GivesTheFirstWorkerMoreByWhatTheSecondWaitsForItsBegin) {
    for (const double seconds : {130.0, 600.0, 3600.0}) {
        const StretchPlan plan = planFor(seconds, 2);
        const double waiting = 0.05 * static_cast<double>(plan.length);
        EXPECT_NEAR(difference(seconds, plan), waiting, 2048) << seconds << " s";
    }
}

TEST(StretchPlan, CoversTheWholeDuration) {
    for (const double seconds : {130.0, 600.0, 602.0, 3600.0})
        for (const unsigned cores : {2U, 3U, 8U}) {
            const StretchPlan plan = planFor(seconds, cores);
            const double count = stretches(seconds, plan);
            EXPECT_LE(count, std::round(count)) << "a last one of next to nothing";
        }
}

TEST(StretchPlan, HasStretchesOfWholeFrames) {
    for (const double seconds : {10.0, 601.3}) {
        EXPECT_EQ(planFor(seconds, 2).first % 1024, 0);
        EXPECT_EQ(planFor(seconds, 2).length % 1024, 0);
    }
}

TEST(StretchPlan, MakesStretchesMuchLongerThanTheirLead) {
    for (const double seconds : {121.0, 200.0, 600.0, 36'000.0})
        for (const unsigned cores : {2U, 4U, 64U})
            EXPECT_GE(planFor(seconds, cores).length, 3 * AudioStretch::lead)
                << seconds << " s, " << cores;
}

TEST(StretchPlan, BoundsWhatWaitsHoweverLongItIsAndHoweverManyCores) {
    for (const double seconds : {121.0, 600.0, 3600.0, 360'000.0})
        for (const unsigned cores : {1U, 2U, 8U, 256U})
            EXPECT_LE(planFor(seconds, cores).readAhead, 610 * rate) << seconds << " s, " << cores;
}

TEST(StretchPlan, ReadsFarEnoughAheadForAllWorkers) {
    const StretchPlan plan = planFor(600, 2);
    EXPECT_EQ(plan.workers, 2);
    EXPECT_GT(plan.readAhead, 2 * plan.length);
}

} // namespace

} // namespace boxlift::media
