#include "drive/stop_on_signals.h"

#include <chrono>
#include <csignal>

#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

namespace boxlift::drive {
namespace {

using namespace std::chrono_literals;

/// Puts the thread's signal mask back, after taking the signals that are still pending.
class KeptSignalMask {
public:
    KeptSignalMask() { pthread_sigmask(SIG_SETMASK, nullptr, &m_before); }
    ~KeptSignalMask() {
        for (const int signal : {SIGINT, SIGTERM})
            takePending(signal);
        pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
    }
    KeptSignalMask(const KeptSignalMask&) = delete;
    KeptSignalMask& operator=(const KeptSignalMask&) = delete;

private:
    static void takePending(int signal) {
        sigset_t pending;
        sigpending(&pending);
        if (sigismember(&pending, signal) == 0)
            return;
        sigset_t wanted;
        sigemptyset(&wanted);
        sigaddset(&wanted, signal);
        sigwait(&wanted, &signal);
    }

    sigset_t m_before{};
};

bool isStoppedSoon(const std::stop_token& token) {
    const auto end = std::chrono::steady_clock::now() + 10s;
    while (!token.stop_requested() && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(1ms);
    return token.stop_requested();
}

class StopOnSignalsTest : public testing::TestWithParam<int> {};

TEST_P(StopOnSignalsTest, RequestsAStopAndLetsTheProcessLive) {
    const KeptSignalMask mask;
    const StopOnSignals stopper;
    ASSERT_FALSE(stopper.token().stop_requested());
    ASSERT_EQ(::kill(::getpid(), GetParam()), 0);

    EXPECT_TRUE(isStoppedSoon(stopper.token()));
}

INSTANTIATE_TEST_SUITE_P(Signals, StopOnSignalsTest, testing::Values(SIGINT, SIGTERM));

TEST(StopOnSignals, EndsWithoutAStopWhenNoSignalCame) {
    const KeptSignalMask mask;
    std::stop_token token;
    {
        const StopOnSignals stopper;
        token = stopper.token();
    }
    EXPECT_FALSE(token.stop_requested());
}

TEST(StopOnSignals, TakesASecondSignalForTheSameWish) {
    const KeptSignalMask mask;
    const StopOnSignals stopper;
    ::kill(::getpid(), SIGTERM);
    ASSERT_TRUE(isStoppedSoon(stopper.token()));
    ::kill(::getpid(), SIGTERM);

    EXPECT_TRUE(stopper.token().stop_requested());
}

} // namespace
} // namespace boxlift::drive
