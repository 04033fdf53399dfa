#include "queue/queue.h"

#include "queue/queue_fixture.h"

namespace boxlift {
namespace {

using namespace std::chrono_literals;
using test::Gate;
using test::spinFor;
using test::spinUntil;
using testing::ElementsAre;
using testing::IsEmpty;

/// The gates stay closed: conversions hang until they are cancelled.
class QueueStop : public test::QueueFixture {
protected:
    void SetUp() override {
        holdAt("a.mov", m_never);
        m_a = addReady("a.mov");
        m_b = addReady("b.mov");
    }

    void startAllAndReachGate() {
        queue().startAll();
        ASSERT_TRUE(spinUntilReached(m_never));
        ASSERT_TRUE(spinUntil([&] { return m_a->progress() == 0.5; }));
    }

    Gate m_never;
    std::shared_ptr<Job> m_a;
    std::shared_ptr<Job> m_b;
};

TEST_F(QueueStop, ByTheTaskEndsTheRunAndKeepsTheJob) {
    startAllAndReachGate();
    queue().task()->cancel();
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_EQ(m_a->state(), Job::State(Ready{}));
    EXPECT_EQ(m_a->progress(), 0.0);
    EXPECT_EQ(m_b->state(), Job::State(Ready{}));
    EXPECT_THAT(names(), ElementsAre("a.mov", "b.mov"));
    EXPECT_THAT(converted(), ElementsAre("a.mov"));
    EXPECT_EQ(queue().pendingCount(), 2);
}

TEST_F(QueueStop, ByTheTaskEndsTheRunOfOneJob) {
    queue().convert(m_a.get());
    ASSERT_TRUE(spinUntilReached(m_never));
    queue().task()->cancel();
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_EQ(m_a->state(), Job::State(Ready{}));
    EXPECT_EQ(m_a->progress(), 0.0);
    EXPECT_THAT(names(), ElementsAre("a.mov", "b.mov"));
}

TEST_F(QueueStop, AtOnceAfterTheStartConvertsNothing) {
    const test::JobLog log(*m_a);
    queue().startAll();
    queue().task()->cancel();
    EXPECT_TRUE(queue().isRunning());
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_THAT(converted(), IsEmpty());
    EXPECT_THAT(log.events(), IsEmpty());
}

TEST_F(QueueStop, AtOnceAfterTheStartOfOneJobLeavesItReady) {
    queue().convert(m_a.get());
    queue().task()->cancel();
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_EQ(m_a->state(), Job::State(Ready{}));
    EXPECT_EQ(m_a->progress(), 0.0);
}

TEST_F(QueueStop, CanBeFollowedByANewRun) {
    startAllAndReachGate();
    queue().task()->cancel();
    ASSERT_TRUE(spinUntilIdle());
    m_engine.converts(m_a->path(), test::copyAtOnce);
    queue().startAll();
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_EQ(m_a->stateKind(), Job::StateKind::Done);
    EXPECT_EQ(m_b->stateKind(), Job::StateKind::Done);
}

TEST_F(QueueStop, KeepsAConversionThatWasFaster) {
    m_engine.converts(m_a->path(), [&](const auto& call, const auto& progress, const auto& stop) {
        try {
            m_never.pass(stop);
        } catch (const Cancelled&) {
        }
        return test::copyAtOnce(call, progress, stop);
    });
    queue().startAll();
    ASSERT_TRUE(spinUntilReached(m_never));
    queue().task()->cancel();
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_EQ(m_a->stateKind(), Job::StateKind::Done);
    EXPECT_THAT(converted(), ElementsAre("a.mov"));
}

TEST_F(QueueStop, TwiceIsAStop) {
    startAllAndReachGate();
    queue().task()->cancel();
    queue().task()->cancel();
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_EQ(m_a->state(), Job::State(Ready{}));
}

TEST_F(QueueStop, ByRemovingTheRunningJobEndsTheRun) {
    startAllAndReachGate();
    queue().remove(m_a.get());
    EXPECT_THAT(names(), ElementsAre("b.mov"));
    EXPECT_TRUE(queue().isRunning());
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_EQ(m_a->state(), Job::State(Ready{}));
    EXPECT_EQ(m_b->state(), Job::State(Ready{}));
    EXPECT_THAT(converted(), ElementsAre("a.mov"));
    EXPECT_EQ(queue().pendingCount(), 1);
}

TEST_F(QueueStop, ByRemovingTheOnlyRunningJobEndsItsRun) {
    queue().convert(m_a.get());
    ASSERT_TRUE(spinUntilReached(m_never));
    queue().remove(m_a.get());
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_EQ(m_a->state(), Job::State(Ready{}));
    EXPECT_THAT(names(), ElementsAre("b.mov"));
}

TEST_F(QueueStop, DoesNotComeFromRemovingAnotherJob) {
    const auto c = addReady("c.mov");
    startAllAndReachGate();
    queue().remove(c.get());
    EXPECT_FALSE(queue().task()->isCancelled());
    m_never.open();
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_EQ(m_a->stateKind(), Job::StateKind::Done);
    EXPECT_EQ(m_b->stateKind(), Job::StateKind::Done);
}

TEST_F(QueueStop, DoesNotComeFromRemovingTheJobThatRanLast) {
    convert(*m_b);
    queue().remove(m_b.get());

    EXPECT_FALSE(queue().task()->isCancelled());
    EXPECT_THAT(names(), ElementsAre("a.mov"));
}

TEST_F(QueueStop, DoesNotComeFromRemovingNothing) {
    startAllAndReachGate();
    queue().remove(nullptr);

    EXPECT_FALSE(queue().task()->isCancelled());
    EXPECT_THAT(names(), ElementsAre("a.mov", "b.mov"));
}

TEST_F(QueueStop, ReactsToARemovalBeforeTheConversionHasEnded) {
    Gate slow;
    m_engine.converts(m_a->path(), [&](const auto&, const auto&, const auto& stop) -> Mode {
        try {
            m_never.pass(stop);
        } catch (const Cancelled&) {
            slow.pass();
            throw;
        }
        return Mode::boxlift;
    });
    queue().startAll();
    ASSERT_TRUE(spinUntilReached(m_never));
    queue().remove(m_a.get());
    ASSERT_TRUE(spinUntilReached(slow));
    spinFor(20ms);
    EXPECT_THAT(names(), ElementsAre("b.mov"));
    EXPECT_TRUE(queue().isRunning());
    EXPECT_EQ(m_a->state(), Job::State(Converting{}));

    slow.open();
    EXPECT_TRUE(spinUntilIdle());
    EXPECT_EQ(m_a->state(), Job::State(Ready{}));
}

} // namespace
} // namespace boxlift
