#include "queue/workers.h"

#include <array>
#include <chrono>
#include <thread>

#include <QCoroTask>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "queue/on_worker.h"
#include "support/event_loop.h"
#include "support/gate.h"

namespace boxlift {
namespace {

using test::Gate;
using test::spinUntil;
using testing::Each;

enum class Ending { none, result, cancellation };

/// Passes the gate on the pool.
QCoro::Task<> pass(WorkerPool& pool, TurnQueue& turns, Gate& gate, std::stop_token stop,
                   Ending& ending) {
    const auto work = [&gate, stop] {
        gate.pass(stop);
        return true;
    };
    try {
        auto hop = onWorker(pool, turns, work);
        co_await hop;
        ending = Ending::result;
    } catch (const Cancelled&) {
        ending = Ending::cancellation;
    }
}

class WorkersTest : public testing::Test {
protected:
    void startConversion(std::size_t number) {
        pass(m_workers.conversions, m_workers.turns, m_conversionGates[number], {},
             m_conversions[number]);
    }

    /// More than there are threads for.
    void startAnalyses() {
        for (Ending& ending : m_analyses)
            pass(m_workers.analyses, m_workers.turns, m_analysisGate, m_workers.stop.get_token(),
                 ending);
    }

    Gate m_analysisGate;
    std::array<Gate, 2> m_conversionGates;
    std::array<Ending, 2> m_conversions{};
    std::array<Ending, 200> m_analyses{};
    Workers m_workers{Engine{}};
};

TEST_F(WorkersTest, DoNotLetAConversionWaitBehindAnalyses) {
    startAnalyses();
    ASSERT_TRUE(spinUntil([&] { return m_analysisGate.wasReached(); }));
    m_conversionGates[0].open();
    startConversion(0);

    EXPECT_TRUE(spinUntil([&] { return m_conversions[0] == Ending::result; }));
    EXPECT_THAT(m_analyses, Each(Ending::none));
    m_analysisGate.open();
}

TEST_F(WorkersTest, DoNotLetAnAnalysisWaitBehindAConversion) {
    startConversion(0);
    ASSERT_TRUE(spinUntil([&] { return m_conversionGates[0].wasReached(); }));
    m_analysisGate.open();
    startAnalyses();

    EXPECT_TRUE(spinUntil([&] { return m_analyses.back() == Ending::result; }));
    EXPECT_EQ(m_conversions[0], Ending::none);
    m_conversionGates[0].open();
}

TEST_F(WorkersTest, ConvertOneAtATime) {
    startConversion(0);
    startConversion(1);
    ASSERT_TRUE(spinUntil([&] { return m_conversionGates[0].wasReached(); }));
    test::spinFor(std::chrono::milliseconds(20));
    EXPECT_FALSE(m_conversionGates[1].wasReached());

    m_conversionGates[0].open();
    EXPECT_TRUE(spinUntil([&] { return m_conversionGates[1].wasReached(); }));
    m_conversionGates[1].open();
}

TEST_F(WorkersTest, StopTheAnalysesAtTheirEndAndLetAllThatWaitedComeToTheirs) {
    startAnalyses();
    ASSERT_TRUE(spinUntil([&] { return m_analysisGate.wasReached(); }));
    m_workers.end();

    EXPECT_THAT(m_analyses, Each(Ending::cancellation));
}

TEST_F(WorkersTest, WaitAtTheirEndForAConversion) {
    startConversion(0);
    ASSERT_TRUE(spinUntil([&] { return m_conversionGates[0].wasReached(); }));
    const std::jthread opener([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        m_conversionGates[0].open();
    });
    m_workers.end();

    EXPECT_EQ(m_conversions[0], Ending::result);
}

TEST_F(WorkersTest, CancelLaterWork) {
    m_workers.end();
    startConversion(0);
    startAnalyses();

    EXPECT_TRUE(spinUntil([&] { return m_analyses.back() != Ending::none; }));
    EXPECT_EQ(m_conversions[0], Ending::cancellation);
    EXPECT_THAT(m_analyses, Each(Ending::cancellation));
    EXPECT_FALSE(m_analysisGate.wasReached());
}

} // namespace
} // namespace boxlift
