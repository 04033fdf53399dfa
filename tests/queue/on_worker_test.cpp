#include "queue/on_worker.h"

#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <QCoroTask>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "model/convert_error.h"
#include "support/event_loop.h"
#include "support/gate.h"

namespace boxlift {
namespace {

using test::Gate;
using test::spinUntil;
using testing::ElementsAre;

/// How a hop ended: one of the two is set.
struct Outcome {
    std::unique_ptr<int> result;
    std::exception_ptr error;
    std::thread::id thread;

    bool hasCome() const { return thread != std::thread::id(); }
};

QCoro::Task<> hop(WorkerPool& pool, TurnQueue& turns,
                  std::function<std::unique_ptr<int>()> function, Outcome& outcome) {
    try {
        auto hop = onWorker(pool, turns, function);
        outcome.result = co_await hop;
    } catch (...) {
        outcome.error = std::current_exception();
    }
    outcome.thread = std::this_thread::get_id();
}

QCoro::Task<> count(WorkerPool& pool, TurnQueue& turns, int limit, std::vector<int>& numbers) {
    for (int i = 0; i < limit; ++i) {
        const auto next = [i] { return i; };
        auto hop = onWorker(pool, turns, next);
        numbers.push_back(co_await hop);
    }
}

class OnWorkerTest : public testing::Test {
protected:
    void start(std::function<std::unique_ptr<int>()> function) {
        hop(m_pool, m_turns, std::move(function), m_outcome);
    }

    template <typename Error>
    std::optional<std::string> messageOf() const {
        try {
            std::rethrow_exception(m_outcome.error);
        } catch (const Error& error) {
            return error.what();
        } catch (...) {
            return std::nullopt;
        }
    }

    TurnQueue m_turns;
    WorkerPool m_pool{"test", 2};
    Outcome m_outcome;
};

TEST_F(OnWorkerTest, RunsTheFunctionElsewhereAndGoesOnWhereItBegan) {
    std::thread::id worker;
    start([&] {
        worker = std::this_thread::get_id();
        return std::make_unique<int>(7);
    });
    ASSERT_TRUE(spinUntil([&] { return m_outcome.hasCome(); }));

    EXPECT_EQ(*m_outcome.result, 7);
    EXPECT_EQ(m_outcome.thread, std::this_thread::get_id());
    EXPECT_NE(worker, std::this_thread::get_id());
}

TEST_F(OnWorkerTest, ReturnsAtOnce) {
    Gate gate;
    start([&] {
        gate.pass();
        return std::make_unique<int>(7);
    });
    EXPECT_FALSE(m_outcome.hasCome());

    gate.open();
    EXPECT_TRUE(spinUntil([&] { return m_outcome.hasCome(); }));
}

TEST_F(OnWorkerTest, BringsTheExceptionItself) {
    start([]() -> std::unique_ptr<int> { throw ConvertError("Not this one."); });
    ASSERT_TRUE(spinUntil([&] { return m_outcome.hasCome(); }));
    EXPECT_EQ(messageOf<ConvertError>(), "Not this one.");

    m_outcome = {};
    start([]() -> std::unique_ptr<int> { throw std::out_of_range("at"); });
    ASSERT_TRUE(spinUntil([&] { return m_outcome.hasCome(); }));
    EXPECT_EQ(messageOf<std::out_of_range>(), "at");
}

TEST_F(OnWorkerTest, IsCancelledWhenThePoolHasEnded) {
    m_pool.end();
    bool wasRun = false;
    start([&] {
        wasRun = true;
        return std::make_unique<int>(7);
    });
    EXPECT_FALSE(m_outcome.hasCome());
    ASSERT_TRUE(spinUntil([&] { return m_outcome.hasCome(); }));

    EXPECT_TRUE(messageOf<Cancelled>().has_value());
    EXPECT_FALSE(wasRun);
}

TEST_F(OnWorkerTest, CanBeMadeAgainAndAgain) {
    std::vector<int> numbers;
    count(m_pool, m_turns, 5, numbers);
    ASSERT_TRUE(spinUntil([&] { return numbers.size() == 5; }));

    EXPECT_THAT(numbers, ElementsAre(0, 1, 2, 3, 4));
}

} // namespace
} // namespace boxlift
