#include "queue/progress_relay.h"

#include <algorithm>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "queue/turn_queue.h"
#include "support/event_loop.h"

namespace boxlift {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using test::spinFor;
using test::spinUntil;
using testing::ElementsAre;
using testing::IsEmpty;

class ProgressRelayTest : public testing::Test {
protected:
    std::shared_ptr<ProgressRelay> makeRelay() {
        return std::make_shared<ProgressRelay>(m_turns.mailbox(), [this](double fraction) {
            m_delivered.push_back(fraction);
            m_times.push_back(Clock::now());
            m_threads.push_back(std::this_thread::get_id());
        });
    }

    bool spinUntilDelivered(std::size_t count) {
        return spinUntil([&] { return m_delivered.size() >= count; });
    }

    TurnQueue m_turns;
    std::vector<double> m_delivered;
    std::vector<Clock::time_point> m_times;
    std::vector<std::thread::id> m_threads;
};

/// The shortest of a few times, for other programs may hold one up.
template <typename Measure>
Clock::duration shortest(const Measure& measure) {
    Clock::duration result = 1h;
    for (int i = 0; i < 5; ++i)
        result = std::min(result, measure());
    return result;
}

TEST_F(ProgressRelayTest, DeliversTheFirstReportAtOnceButNotWithinTheCall) {
    const auto time = shortest([&] {
        m_delivered.clear();
        const auto relay = makeRelay();
        const auto start = Clock::now();
        relay->report(0.25);
        EXPECT_THAT(m_delivered, IsEmpty());
        EXPECT_TRUE(spinUntilDelivered(1));
        return Clock::now() - start;
    });

    EXPECT_LT(time, 50ms);
    EXPECT_THAT(m_delivered, ElementsAre(0.25));
}

TEST_F(ProgressRelayTest, DeliversACompleteOneAtOnce) {
    const auto time = shortest([&] {
        m_delivered.clear();
        const auto relay = makeRelay();
        const auto start = Clock::now();
        relay->report(0.1);
        relay->report(0.5);
        relay->report(1.0);
        EXPECT_TRUE(spinUntilDelivered(2));
        return Clock::now() - start;
    });

    EXPECT_LT(time, 50ms);
    EXPECT_THAT(m_delivered, ElementsAre(0.1, 1.0));
}

TEST_F(ProgressRelayTest, DeliversACompleteOneAtOnceThatComesWhileAnotherWaits) {
    const auto relay = makeRelay();
    relay->report(0.1);
    ASSERT_TRUE(spinUntilDelivered(1));
    relay->report(0.5);
    spinFor(10ms);
    relay->report(1.0);
    ASSERT_TRUE(spinUntilDelivered(2));
    spinFor(150ms);

    EXPECT_THAT(m_delivered, ElementsAre(0.1, 1.0));
}

TEST_F(ProgressRelayTest, DeliversTheLatestValueWhenItsTimeHasCome) {
    const auto relay = makeRelay();
    relay->report(0.1);
    ASSERT_TRUE(spinUntilDelivered(1));
    relay->report(0.2);
    relay->report(0.3);
    ASSERT_TRUE(spinUntilDelivered(2));

    EXPECT_THAT(m_delivered, ElementsAre(0.1, 0.3));
    EXPECT_GE(m_times[1] - m_times[0], ProgressRelay::interval - 1ms);
}

TEST_F(ProgressRelayTest, DeliversALaterReportAtOnceWhenTheIntervalIsOver) {
    const auto relay = makeRelay();
    relay->report(0.1);
    ASSERT_TRUE(spinUntilDelivered(1));
    spinFor(ProgressRelay::interval + 10ms);
    relay->report(0.2);
    spinFor(ProgressRelay::interval / 2);

    EXPECT_THAT(m_delivered, ElementsAre(0.1, 0.2));
}

TEST_F(ProgressRelayTest, DropsWhatWaitsWhenTheConversionEnds) {
    const auto relay = makeRelay();
    relay->report(0.5);
    relay->close();
    relay->report(0.6);
    relay->report(1.0);
    spinFor(150ms);

    EXPECT_THAT(m_delivered, IsEmpty());
}

TEST_F(ProgressRelayTest, DropsAHeldValueWhenTheConversionEnds) {
    const auto relay = makeRelay();
    relay->report(0.1);
    ASSERT_TRUE(spinUntilDelivered(1));
    relay->report(0.5);
    relay->close();
    spinFor(150ms);

    EXPECT_THAT(m_delivered, ElementsAre(0.1));
}

TEST_F(ProgressRelayTest, DeliversNothingOnceItIsGone) {
    auto relay = makeRelay();
    relay->report(0.1);
    ASSERT_TRUE(spinUntilDelivered(1));
    relay->report(0.5);
    relay.reset();
    spinFor(150ms);

    EXPECT_THAT(m_delivered, ElementsAre(0.1));
}

TEST_F(ProgressRelayTest, DeliversAtMostTenASecondOfManyThreadsReports) {
    const auto relay = makeRelay();
    const auto start = Clock::now();
    {
        std::vector<std::jthread> reporters;
        for (int thread = 0; thread < 3; ++thread) {
            reporters.emplace_back([&] {
                for (int i = 0; i < 400; ++i) {
                    relay->report(i / 1000.0);
                    std::this_thread::sleep_for(1ms);
                }
            });
        }
        EXPECT_TRUE(spinUntilDelivered(4));
    }
    spinFor(150ms);
    const auto elapsed = Clock::now() - start;

    // The first at once, then one at the end of each interval.
    EXPECT_LE(static_cast<long>(m_delivered.size()), 1 + elapsed / ProgressRelay::interval);
    for (std::size_t i = 1; i < m_times.size(); ++i)
        EXPECT_GE(m_times[i] - m_times[i - 1], ProgressRelay::interval - 1ms);
    EXPECT_THAT(m_threads, testing::Each(std::this_thread::get_id()));
}

} // namespace
} // namespace boxlift
