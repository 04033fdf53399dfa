#include "engine/media/audio_stretch.h"
#include "engine/media/stretch_plan.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

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

/// When each worker has encoded its last stretch, in samples of encoding, where reading takes a
/// twentieth of that.
std::vector<double> ends(double seconds, const StretchPlan& plan) {
    std::vector<double> workers(static_cast<std::size_t>(plan.workers), 0);
    const double whole = seconds * rate;
    double length = static_cast<double>(plan.first);
    double lead = 0;
    for (double begin = 0; begin < whole;
         begin += std::exchange(length, static_cast<double>(plan.length))) {
        double& worker = *std::ranges::min_element(workers);
        const double start = std::max(worker, begin / 20);
        worker = start + std::min(length, whole - begin) + std::exchange(lead, AudioStretch::lead);
    }
    return workers;
}

TEST(StretchPlan, IsOneStretchForWhatIsShortOrUnknownAndForOneCore) {
    EXPECT_TRUE(isSerial(planFor(20, 8)));
    EXPECT_TRUE(isSerial(planFor(135, 8)));
    EXPECT_TRUE(isSerial(planFor(0, 8)));
    for (const double seconds : {-0.5, -1.0, -5.0, -300.0, -603.0, -1e6})
        EXPECT_TRUE(isSerial(planFor(seconds, 8))) << seconds << " s";
    EXPECT_TRUE(isSerial(planFor(3600, 1)));
    EXPECT_TRUE(isSerial(planFor(3600, 0)));
    EXPECT_TRUE(isSerial(planStretches(Time(), rate, 8)));
}

TEST(StretchPlan, DividesWhatHasRoomForTwoStretchesAndALead) {
    EXPECT_TRUE(isSerial(planFor(138, 2)));
    EXPECT_EQ(planFor(139, 2).workers, 2);
    // A lead lasts four times as long.
    EXPECT_TRUE(isSerial(planStretches(Time::fromSeconds(186), 11025, 2)));
    EXPECT_EQ(planStretches(Time::fromSeconds(188), 11025, 2).workers, 2);
}

TEST(StretchPlan, GivesEachWorkerAsManyStretches) {
    for (const double seconds : {145.0, 200.0, 600.0, 1300.0, 3600.0, 36'000.0})
        for (const unsigned cores : {2U, 3U, 8U}) {
            const StretchPlan plan = planFor(seconds, cores);
            const double rounds = stretches(seconds, plan) / plan.workers;
            EXPECT_GT(rounds, std::ceil(rounds) - 0.1) << seconds << " s, " << cores;
        }
}

TEST(StretchPlan, HasTwoWorkersEndAtTheSameTime) {
    for (const double seconds : {145.0, 600.0, 3600.0}) {
        const std::vector<double> both = ends(seconds, planFor(seconds, 2));
        ASSERT_EQ(both.size(), 2U);
        EXPECT_NEAR(both[0] / rate, both[1] / rate, 1) << seconds << " s";
    }
}

TEST(StretchPlan, CoversTheWholeDuration) {
    for (const double seconds : {145.0, 600.0, 602.0, 3600.0})
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
    for (const double seconds : {121.0, 145.0, 200.0, 600.0, 605.0, 700.0, 36'000.0})
        for (const unsigned cores : {2U, 4U, 64U})
            EXPECT_GE(planFor(seconds, cores).length, 60 * rate) << seconds << " s, " << cores;
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
    const StretchPlan low = planStretches(Time::fromSeconds(195), 11025, 2);
    EXPECT_EQ(low.workers, 2);
    EXPECT_GT(low.first, 2 * low.length);
    EXPECT_GT(low.readAhead, low.first);
}

} // namespace

} // namespace boxlift::media
