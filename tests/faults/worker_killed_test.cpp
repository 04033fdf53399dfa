#include <chrono>
#include <csignal>
#include <thread>

#include <gtest/gtest.h>
#include <unistd.h>

#include "input/long_conversion.h"
#include "support/worker_processes.h"

namespace boxlift::test {

namespace {

using std::chrono_literals::operator""ms;

constexpr const char* stopped = "The conversion stopped unexpectedly. The file may be damaged.";

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

/// Kills the worker that has the output open, some time after it got hold of it.
class Killer {
public:
    Killer(std::filesystem::path folder, Seconds delay)
        : m_folder(std::move(folder)), m_delay(delay),
          m_thread([this](const std::stop_token& stop) { run(stop); }) {}

    /// Whether it killed. Once it has been called it kills no more.
    bool finish() {
        m_thread.request_stop();
        m_thread.join();
        return m_hasKilled;
    }
    /// After finish(): when the worker got hold of the output.
    Clock::time_point begin() const { return m_begin; }

private:
    void run(const std::stop_token& stop) {
        const pid_t worker = find(stop);
        m_begin = Clock::now();
        while (!stop.stop_requested() && Clock::now() - m_begin < m_delay)
            std::this_thread::sleep_for(1ms);
        if (!stop.stop_requested())
            m_hasKilled = ::kill(worker, SIGKILL) == 0;
    }

    pid_t find(const std::stop_token& stop) const {
        while (!stop.stop_requested()) {
            for (const pid_t worker : workersOf(::getpid(), "conversion"))
                if (openOutputSize(worker, m_folder.native()) >= 0)
                    return worker;
            std::this_thread::sleep_for(1ms);
        }
        return -1;
    }

    const std::filesystem::path m_folder;
    const Seconds m_delay;
    Clock::time_point m_begin;
    bool m_hasKilled = false;
    std::jthread m_thread;
};

} // namespace

class WorkerKilled : public LongConversion {
protected:
    /// How long the worker of an undisturbed conversion has the output open.
    Seconds undisturbed() {
        Killer never(m_out, Seconds(600));
        EXPECT_TRUE(convert(m_request).mode);
        const auto end = Clock::now();
        never.finish();
        std::filesystem::remove(m_request.output);
        return end - never.begin();
    }

    /// Whether the worker was killed before it had done its work.
    bool killAfter(Seconds delay) {
        Killer killer(m_out, delay);
        const Conversion done = convert(m_request);
        const bool wasKilled = killer.finish();
        if (done.mode) {
            std::filesystem::remove(m_request.output);
            return false;
        }
        EXPECT_TRUE(wasKilled);
        EXPECT_EQ(done.sentence, stopped);
        EXPECT_EQ(namesIn(m_out), std::vector<std::string>());
        return true;
    }
};

TEST_P(WorkerKilled, AtAnyPointCostsTheJobAndLeavesNothing) {
    constexpr int points = 8;
    Seconds whole = undisturbed();
    int killedCount = 0;
    for (int attempt = 0; attempt < 6 * points && killedCount < points; ++attempt) {
        if (killAfter(whole * (attempt % points) / points))
            ++killedCount;
        else // The undisturbed one was slower, with the machine busier than it is now.
            whole *= 0.8;
    }
    EXPECT_EQ(killedCount, points);
    EXPECT_TRUE(convert(m_request).mode);
}

INSTANTIATE_TEST_SUITE_P(Ways, WorkerKilled, testing::ValuesIn(shorterWays), LongWay::nameOf);

} // namespace boxlift::test
