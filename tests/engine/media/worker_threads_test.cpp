#include "engine/media/worker_threads.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "engine/media/bounded_queue.h"

namespace boxlift::media {

namespace {

TEST(WorkerThreads, RunTheirWork) {
    std::atomic<int> done = 0;
    WorkerThreads threads([] {});
    for (int i = 0; i < 4; ++i)
        threads.start("test", [&] { ++done; });
    threads.join();
    EXPECT_EQ(done, 4);
    EXPECT_FALSE(threads.isAborted());
    EXPECT_NO_THROW(threads.rethrow());
}

TEST(WorkerThreads, KeepTheFirstFailureAndWakeTheOthers) {
    BoundedQueue<int> queue(1);
    WorkerThreads threads([&] { queue.abort(); });
    threads.start("waits", [&] {
        if (!queue.pop())
            throw std::logic_error("woken");
    });
    threads.start("fails", [] { throw std::runtime_error("first"); });
    threads.join();
    EXPECT_TRUE(threads.isAborted());
    try {
        threads.rethrow();
        FAIL() << "nothing was thrown";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "first");
    }
}

TEST(WorkerThreads, EndWithTheirOwner) {
    BoundedQueue<int> queue(1);
    std::atomic<bool> ended = false;
    {
        WorkerThreads threads([&] { queue.abort(); });
        threads.start("waits", [&] {
            while (queue.pop()) {
            }
            ended = true;
        });
    }
    EXPECT_TRUE(ended);
}

} // namespace

} // namespace boxlift::media
