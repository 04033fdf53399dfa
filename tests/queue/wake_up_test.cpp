#include "queue/wake_up.h"

#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>

namespace boxlift {
namespace {

bool isReadable(const WakeUp& wakeUp, int milliseconds = 0) {
    pollfd descriptor{.fd = wakeUp.descriptor(), .events = POLLIN, .revents = 0};
    return ::poll(&descriptor, 1, milliseconds) == 1;
}

TEST(WakeUpTest, IsReadableFromTheSignalUntilItIsCleared) {
    WakeUp wakeUp;
    EXPECT_FALSE(isReadable(wakeUp));
    wakeUp.signal();
    EXPECT_TRUE(isReadable(wakeUp));
    EXPECT_TRUE(isReadable(wakeUp));
    wakeUp.clear();
    EXPECT_FALSE(isReadable(wakeUp));
}

TEST(WakeUpTest, ForgetsAllSignalsAtOnce) {
    WakeUp wakeUp;
    for (int i = 0; i < 100; ++i)
        wakeUp.signal();
    wakeUp.clear();

    EXPECT_FALSE(isReadable(wakeUp));
}

TEST(WakeUpTest, DoesNotBlockWhenThereIsNothingToClear) {
    WakeUp wakeUp;
    wakeUp.clear();
    wakeUp.signal();

    EXPECT_TRUE(isReadable(wakeUp));
}

TEST(WakeUpTest, WakesAThreadThatWaits) {
    WakeUp wakeUp;
    const std::jthread other([&] { wakeUp.signal(); });

    EXPECT_TRUE(isReadable(wakeUp, 30'000));
}

TEST(WakeUpTest, StaysInThisProcess) {
    const WakeUp wakeUp;

    EXPECT_TRUE(::fcntl(wakeUp.descriptor(), F_GETFD) & FD_CLOEXEC);
}

} // namespace
} // namespace boxlift
