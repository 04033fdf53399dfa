#include "queue/turn_queue.h"

#include <optional>
#include <thread>
#include <vector>

#include <QCoroTask>
#include <QTimer>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/event_loop.h"

namespace boxlift {
namespace {

using namespace std::chrono_literals;
using test::spinFor;
using test::spinUntil;
using testing::ElementsAre;
using testing::IsEmpty;

QCoro::Task<> noteTurns(TurnQueue& turns, std::vector<int>& log) {
    log.push_back(0);
    co_await turns.nextTurn();
    log.push_back(1);
    co_await turns.nextTurn();
    log.push_back(2);
}

TEST(TurnQueueTest, RunsPostedWorkInOrderFromTheEventLoop) {
    TurnQueue turns;
    std::vector<int> log;
    for (const int number : {1, 2, 3})
        turns.mailbox()->post([&log, number] { log.push_back(number); });
    EXPECT_THAT(log, IsEmpty());

    EXPECT_TRUE(spinUntil([&] { return log.size() == 3; }));
    EXPECT_THAT(log, ElementsAre(1, 2, 3));
}

TEST(TurnQueueTest, RunsOnTheMainThreadWhatOthersPost) {
    TurnQueue turns;
    std::optional<std::thread::id> thread;
    std::jthread([mailbox = turns.mailbox(), &thread] {
        mailbox->post([&thread] { thread = std::this_thread::get_id(); });
    }).join();

    EXPECT_TRUE(spinUntil([&] { return thread.has_value(); }));
    EXPECT_EQ(thread, std::this_thread::get_id());
}

TEST(TurnQueueTest, LeavesWhatComesMeanwhileToALaterTurn) {
    TurnQueue turns;
    std::vector<int> log;
    turns.mailbox()->post([&] {
        log.push_back(1);
        turns.mailbox()->post([&] { log.push_back(3); });
        QTimer::singleShot(0, [&] { log.push_back(2); });
    });

    EXPECT_TRUE(spinUntil([&] { return log.size() == 3; }));
    EXPECT_EQ(log.front(), 1);
}

TEST(TurnQueueTest, LetsTheEventLoopTurnDuringLongWork) {
    TurnQueue turns;
    int done = 0;
    int doneAtFirstTimer = -1;
    for (int i = 0; i < 50; ++i) {
        turns.mailbox()->post([&] {
            std::this_thread::sleep_for(2ms);
            ++done;
        });
    }
    QTimer::singleShot(10ms, [&] { doneAtFirstTimer = done; });

    EXPECT_TRUE(spinUntil([&] { return done == 50; }));
    EXPECT_GE(doneAtFirstTimer, 0);
    EXPECT_LT(doneAtFirstTimer, 50);
}

TEST(TurnQueueTest, ResumesACoroutineInALaterTurn) {
    TurnQueue turns;
    std::vector<int> log;
    noteTurns(turns, log);
    EXPECT_THAT(log, ElementsAre(0));

    EXPECT_TRUE(spinUntil([&] { return log.size() == 3; }));
    EXPECT_THAT(log, ElementsAre(0, 1, 2));
}

TEST(TurnQueueTest, DrainsWhatWaitsAndWhatThatBringsWithIt) {
    TurnQueue turns;
    std::vector<int> log;
    noteTurns(turns, log);
    turns.drain();

    EXPECT_THAT(log, ElementsAre(0, 1, 2));
}

TEST(TurnQueueTest, DropsWhatComesAfterItsEnd) {
    std::optional<TurnQueue> turns(std::in_place);
    const auto mailbox = turns->mailbox();
    bool wasRun = false;
    mailbox->post([&] { wasRun = true; });
    turns.reset();
    mailbox->post([&] { wasRun = true; });
    spinFor(20ms);

    EXPECT_FALSE(wasRun);
}

} // namespace
} // namespace boxlift
