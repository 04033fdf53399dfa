#include "queue/worker_pool.h"

#include <atomic>
#include <chrono>
#include <deque>
#include <functional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include "support/gate.h"

namespace boxlift {
namespace {

using test::Gate;
using testing::ElementsAre;
using testing::SizeIs;

/// What happened, in order. Any thread.
class Log {
public:
    void add(const std::string& event) {
        const std::scoped_lock lock(m_mutex);
        m_events.push_back(event);
    }

    std::vector<std::string> events() const {
        const std::scoped_lock lock(m_mutex);
        return m_events;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<std::string> m_events;
};

class NamedWork final : public WorkerPool::Work {
public:
    NamedWork(Log& log, std::string name, std::function<void()> action)
        : m_log(log), m_name(std::move(name)), m_action(std::move(action)) {}

    void run() noexcept override {
        m_log.add(m_name);
        m_action();
    }
    void abandon() noexcept override { m_log.add("no " + m_name); }

private:
    Log& m_log;
    const std::string m_name;
    const std::function<void()> m_action;
};

class WorkerPoolTest : public testing::Test {
protected:
    void submit(
        WorkerPool& pool, const std::string& name, std::function<void()> action = [] {}) {
        pool.submit(m_works.emplace_back(m_log, name, std::move(action)));
    }

    /// Keeps a thread busy until the gate opens.
    void submitGate(WorkerPool& pool, const std::string& name, Gate& gate) {
        submit(pool, name, [&gate] { gate.pass(); });
    }

    static void waitFor(const Gate& gate) {
        while (!gate.wasReached())
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }

    Log m_log;
    std::deque<NamedWork> m_works;
};

TEST_F(WorkerPoolTest, WorksInTheOrderInWhichWorkComes) {
    Gate last;
    WorkerPool pool("test", 1);
    for (const char* name : {"a", "b", "c"})
        submit(pool, name);
    submitGate(pool, "last", last);
    waitFor(last);
    last.open();

    EXPECT_THAT(m_log.events(), ElementsAre("a", "b", "c", "last"));
}

TEST_F(WorkerPoolTest, WorksOnAsManyThreadsAsItMayHave) {
    Gate gates[3];
    WorkerPool pool("test", 2);
    submitGate(pool, "a", gates[0]);
    submitGate(pool, "b", gates[1]);
    submitGate(pool, "c", gates[2]);
    waitFor(gates[0]);
    waitFor(gates[1]);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_FALSE(gates[2].wasReached());

    gates[1].open();
    waitFor(gates[2]);
    gates[0].open();
    gates[2].open();
}

TEST_F(WorkerPoolTest, NamesItsThreads) {
    char name[16] = {};
    Gate gate;
    WorkerPool pool("conversion", 1);
    submit(pool, "a", [&] {
        ::pthread_getname_np(::pthread_self(), name, sizeof name);
        gate.pass();
    });
    waitFor(gate);
    gate.open();

    EXPECT_STREQ(name, "conversion");
}

TEST_F(WorkerPoolTest, FinishesTheRunningWorkAndAbandonsTheRestAtItsEnd) {
    Gate gate;
    bool hasEnded = false;
    WorkerPool pool("test", 1);
    submit(pool, "a", [&] {
        gate.pass();
        hasEnded = true;
    });
    submit(pool, "b");
    submit(pool, "c");
    waitFor(gate);
    std::jthread opener([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        gate.open();
    });
    pool.end();

    EXPECT_TRUE(hasEnded);
    EXPECT_THAT(m_log.events(), ElementsAre("a", "no b", "no c"));
}

TEST_F(WorkerPoolTest, AbandonsWhatComesAfterItsEnd) {
    WorkerPool pool("test", 2);
    pool.end();
    submit(pool, "a");
    pool.end();

    EXPECT_THAT(m_log.events(), ElementsAre("no a"));
}

TEST_F(WorkerPoolTest, EndsAtItsDestruction) {
    Gate gate;
    {
        WorkerPool pool("test", 1);
        submitGate(pool, "a", gate);
        submit(pool, "b");
        waitFor(gate);
        gate.open();
    }

    const auto events = m_log.events();
    ASSERT_THAT(events, SizeIs(2));
    EXPECT_EQ(events.front(), "a");
    EXPECT_THAT(events.back(), testing::AnyOf("b", "no b"));
}

TEST_F(WorkerPoolTest, DoesAllOfManyWorks) {
    std::atomic<int> count = 0;
    {
        WorkerPool pool("test", 4);
        for (int i = 0; i < 2000; ++i)
            submit(pool, "work", [&] { ++count; });
        while (count < 2000)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }

    EXPECT_THAT(m_log.events(), SizeIs(2000));
}

#ifdef __GLIBC__
/// Lets no thread start while it lives, for none could have such a stack.
class NoMoreThreads {
public:
    NoMoreThreads() {
        ::pthread_getattr_default_np(&m_before);
        pthread_attr_t huge = m_before;
        ::pthread_attr_setstacksize(&huge, std::size_t(1) << 50);
        ::pthread_setattr_default_np(&huge);
    }
    ~NoMoreThreads() { ::pthread_setattr_default_np(&m_before); }
    NoMoreThreads(const NoMoreThreads&) = delete;
    NoMoreThreads& operator=(const NoMoreThreads&) = delete;

private:
    pthread_attr_t m_before{};
};

TEST_F(WorkerPoolTest, EndsWhereNotOneThreadCanBeHad) {
    const NoMoreThreads none;
    WorkerPool pool("test", 2);
    submit(pool, "a");
    submit(pool, "b");

    EXPECT_THAT(m_log.events(), ElementsAre("no a", "no b"));
}

TEST_F(WorkerPoolTest, MakesDoWithTheThreadsThatItHas) {
    Gate gates[2];
    WorkerPool pool("test", 2);
    submitGate(pool, "a", gates[0]);
    waitFor(gates[0]);
    {
        const NoMoreThreads none;
        submitGate(pool, "b", gates[1]);
    }
    gates[0].open();
    waitFor(gates[1]);
    gates[1].open();

    EXPECT_THAT(m_log.events(), ElementsAre("a", "b"));
}
#endif

} // namespace
} // namespace boxlift
