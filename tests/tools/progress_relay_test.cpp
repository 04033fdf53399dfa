#include "drive/progress_relay.h"

#include <algorithm>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace boxlift::drive {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using testing::ElementsAre;
using testing::IsEmpty;

/// All that is left to print.
std::vector<double> rest(ProgressRelay& relay) {
    std::vector<double> values;
    while (const auto value = relay.next())
        values.push_back(*value);
    return values;
}

/// How long `next` takes to deliver `expected` after `reports`: the best of a few tries, for other
/// programs may hold one up.
Clock::duration shortestWait(const std::vector<double>& reports, double expected) {
    Clock::duration shortest = 10s;
    for (int i = 0; i < 5; ++i) {
        ProgressRelay relay;
        for (const double report : reports)
            relay.report(report);
        if (reports.size() > 1)
            relay.next();
        const auto start = Clock::now();
        EXPECT_EQ(relay.next(), expected);
        shortest = std::min(shortest, Clock::now() - start);
    }
    return shortest;
}

TEST(ProgressRelay, DeliversTheFirstReportAtOnce) {
    EXPECT_LT(shortestWait({0.0}, 0.0), 50ms);
}

TEST(ProgressRelay, DeliversACompleteOneAtOnce) {
    EXPECT_LT(shortestWait({0.1, 0.9, 1.0}, 1.0), 50ms);
}

TEST(ProgressRelay, DeliversTheFirstReportEvenWhenOthersOvertakeIt) {
    ProgressRelay relay;
    relay.report(0.0);
    relay.report(0.5);
    relay.report(1.0);
    relay.close();

    EXPECT_THAT(rest(relay), ElementsAre(0.0, 1.0));
}

TEST(ProgressRelay, DeliversTheLatestValueWhenItsTimeHasCome) {
    ProgressRelay relay;
    relay.report(0.1);
    relay.next();
    const auto start = Clock::now();
    relay.report(0.2);
    relay.report(0.3);

    EXPECT_EQ(relay.next(), 0.3);
    EXPECT_GT(Clock::now() - start, 90ms);
}

TEST(ProgressRelay, DeliversACompleteOneThatIsFollowedByTheEnd) {
    ProgressRelay relay;
    relay.report(0.5);
    relay.next();
    relay.report(1.0);
    relay.close();

    EXPECT_THAT(rest(relay), ElementsAre(1.0));
}

TEST(ProgressRelay, DropsAnIncompleteOneThatTheEndOvertakes) {
    ProgressRelay relay;
    relay.report(0.5);
    relay.next();
    relay.report(0.6);
    relay.close();

    EXPECT_THAT(rest(relay), IsEmpty());
}

TEST(ProgressRelay, DropsReportsAfterTheEnd) {
    ProgressRelay relay;
    relay.close();
    relay.report(0.5);
    relay.report(1.0);

    EXPECT_THAT(rest(relay), IsEmpty());
}

TEST(ProgressRelay, DropsAValueThatRepeats) {
    ProgressRelay relay;
    relay.report(1.0);
    relay.next();
    relay.report(1.0);
    relay.close();

    EXPECT_THAT(rest(relay), IsEmpty());
}

TEST(ProgressRelay, DeliversAtMostTenASecond) {
    ProgressRelay relay;
    const auto start = Clock::now();
    std::jthread reporter([&] {
        for (int i = 0; i < 350; ++i) {
            relay.report(i / 350.0);
            std::this_thread::sleep_for(1ms);
        }
        relay.report(1.0);
        relay.close();
    });
    const std::vector<double> values = rest(relay);
    const auto elapsed = Clock::now() - start;

    // The first at once, one at the end of each interval, the complete one.
    EXPECT_LE(static_cast<long>(values.size()), 2 + elapsed / ProgressRelay::interval);
    EXPECT_GE(values.size(), 3u);
    EXPECT_EQ(values.back(), 1.0);
    EXPECT_TRUE(std::ranges::is_sorted(values));
}

TEST(ProgressRelay, DeliversAHeldValueWithoutAFurtherReport) {
    ProgressRelay relay;
    relay.report(0.1);
    relay.next();
    std::jthread reporter([&] { relay.report(0.2); });

    EXPECT_EQ(relay.next(), 0.2);
}

} // namespace
} // namespace boxlift::drive
