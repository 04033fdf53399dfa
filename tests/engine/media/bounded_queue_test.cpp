#include "engine/media/bounded_queue.h"

#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <numeric>
#include <thread>
#include <vector>

using namespace std::chrono_literals;

namespace boxlift::media {

namespace {

constexpr auto soon = 20ms;
constexpr auto longEnough = 10s;

TEST(BoundedQueue, GivesItemsBackInTheirOrder) {
    BoundedQueue<int> queue(3);
    for (int i = 1; i <= 3; ++i)
        ASSERT_TRUE(queue.push(i));
    EXPECT_EQ(queue.pop(), 1);
    EXPECT_EQ(queue.pop(), 2);
    EXPECT_EQ(queue.pop(), 3);
}

TEST(BoundedQueue, MovesItemsThatCannotBeCopied) {
    BoundedQueue<std::unique_ptr<int>> queue(1);
    ASSERT_TRUE(queue.push(std::make_unique<int>(7)));
    const auto item = queue.pop();
    ASSERT_TRUE(item.has_value());
    EXPECT_EQ(**item, 7);
}

TEST(BoundedQueue, MakesThePusherWaitWhileItIsFull) {
    BoundedQueue<int> queue(1);
    ASSERT_TRUE(queue.push(1));
    EXPECT_FALSE(queue.isPushImmediate());
    EXPECT_FALSE(queue.waitForRoom(soon));
    auto pushed = std::async(std::launch::async, [&] { return queue.push(2); });
    EXPECT_EQ(pushed.wait_for(soon), std::future_status::timeout);
    EXPECT_EQ(queue.pop(), 1);
    EXPECT_TRUE(pushed.get());
    EXPECT_EQ(queue.pop(), 2);
    EXPECT_TRUE(queue.waitForRoom(longEnough));
}

TEST(BoundedQueue, GivesOutWhatWaitsAfterItWasClosed) {
    BoundedQueue<int> queue(2);
    ASSERT_TRUE(queue.push(1));
    queue.close();
    EXPECT_FALSE(queue.push(2));
    EXPECT_EQ(queue.pop(), 1);
    EXPECT_EQ(queue.pop(), std::nullopt);
}

TEST(BoundedQueue, DropsWhatWaitsWhenItIsAborted) {
    const auto item = std::make_shared<int>(1);
    BoundedQueue<std::shared_ptr<int>> queue(2);
    ASSERT_TRUE(queue.push(item));
    queue.abort();
    EXPECT_EQ(item.use_count(), 1);
    EXPECT_EQ(queue.pop(), std::nullopt);
    EXPECT_FALSE(queue.push(item));
}

TEST(BoundedQueue, WakesAWaitingPopperWhenItIsClosed) {
    BoundedQueue<int> queue(1);
    auto popped = std::async(std::launch::async, [&] { return queue.pop(); });
    EXPECT_EQ(popped.wait_for(soon), std::future_status::timeout);
    queue.close();
    EXPECT_EQ(popped.get(), std::nullopt);
}

TEST(BoundedQueue, WakesAWaitingPusherWhenItIsAborted) {
    BoundedQueue<int> queue(1);
    ASSERT_TRUE(queue.push(1));
    auto pushed = std::async(std::launch::async, [&] { return queue.push(2); });
    EXPECT_EQ(pushed.wait_for(soon), std::future_status::timeout);
    queue.abort();
    EXPECT_FALSE(pushed.get());
    EXPECT_TRUE(queue.isPushImmediate());
}

TEST(BoundedQueue, LosesNothingBetweenSeveralThreads) {
    constexpr int perProducer = 2000;
    BoundedQueue<int> queue(4);
    std::vector<std::jthread> producers;
    for (int producer = 0; producer < 2; ++producer)
        producers.emplace_back([&] {
            for (int i = 1; i <= perProducer; ++i)
                queue.push(i);
        });
    const auto drain = [&] {
        long sum = 0;
        while (const auto item = queue.pop())
            sum += *item;
        return sum;
    };
    auto first = std::async(std::launch::async, drain);
    auto second = std::async(std::launch::async, drain);
    producers.clear();
    queue.close();
    EXPECT_EQ(first.get() + second.get(), 2L * perProducer * (perProducer + 1) / 2);
}

} // namespace

} // namespace boxlift::media
