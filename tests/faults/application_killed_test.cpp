#include <chrono>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <random>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "engine/media/child_process.h"
#include "faults/drive_runs.h"
#include "faults/program.h"
#include "support/worker_processes.h"

namespace boxlift::test {

namespace fs = std::filesystem;

namespace {

using std::chrono_literals::operator""ms;
using std::chrono_literals::operator""s;
using Clock = std::chrono::steady_clock;

template <typename Condition>
bool becomesTrue(Condition isTrue, Clock::duration limit) {
    const auto deadline = Clock::now() + limit;
    while (!isTrue()) {
        if (Clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(1ms);
    }
    return true;
}

} // namespace

class ApplicationKilled : public DriveRuns {
protected:
    /// Kills a run at a random point: of the whole run, or mostly of the time from the first byte
    /// of the output on.
    void killOnce(const fs::path& folder, const std::function<void()>& prepare) {
        Program program(command(folder), prepare);
        const bool waitsForOutput = m_random() % 5 != 0;
        if (waitsForOutput)
            becomesTrue(
                [&] {
                    return openOutputSize(program.id(), folder.native()) > 0 || program.hasEnded();
                },
                10s);
        const double share = std::uniform_real_distribution<>(0, 1)(m_random);
        std::this_thread::sleep_for(
            std::chrono::duration<double>(share * seconds() * (waitsForOutput ? 0.5 : 1)));
        const auto workers = workersOf(program.id(), "conversion");
        const auto analyses = workersOf(program.id(), "analysis");
        m_whileWriting += openOutputSize(program.id(), folder.native()) > 0 ? 1 : 0;
        program.kill();
        for (const auto* ids : {&workers, &analyses})
            for (const pid_t id : *ids)
                EXPECT_TRUE(becomesTrue([&] { return !isRunning(id); }, 10s));
        expectWholeFilesOnly(folder);
    }

    int m_whileWriting = 0;
    std::mt19937 m_random{100};
};

TEST_F(ApplicationKilled, AtARandomPointLeavesWholeFilesAlone) {
    constexpr int runs = 80;
    for (int run = 0; run < runs; ++run) {
        const fs::path folder = newFolder("out");
        killOnce(folder, {});
        EXPECT_EQ(hiddenCount(folder), 0);
        fs::remove_all(folder);
    }
    std::cout << m_whileWriting << " of " << runs << " while the output was being written\n";
    EXPECT_GE(m_whileWriting, runs / 2);
}

// What the file system makes visible while it has no name is gone after the next run.
TEST_F(ApplicationKilled, WhereThereAreNoUnnamedFilesTheNextRunSweeps) {
    constexpr int runs = 20;
    int leftOver = 0;
    const auto prepare = [] {
        if (!media::test::forbidUnnamedFiles())
            std::_Exit(126);
    };
    const fs::path folder = newFolder("out");
    for (int run = 0; run < runs; ++run) {
        killOnce(folder, prepare);
        leftOver += hiddenCount(folder);
    }
    std::cout << m_whileWriting << " of " << runs << " while the output was being written\n";
    EXPECT_GT(leftOver, 0);
    EXPECT_EQ(Program(command(folder), prepare).wait(), 0);
    EXPECT_EQ(hiddenCount(folder), 0);
    expectWholeFilesOnly(folder);
}

TEST_F(DriveRuns, TwoAtOnceIntoOneFolderReplaceNothing) {
    for (int round = 0; round < 5; ++round) {
        const fs::path folder = newFolder("out");
        Program first(command(folder));
        Program second(command(folder));
        first.wait();
        second.wait();
        expectWholeFilesOnly(folder);
        EXPECT_EQ(hiddenCount(folder), 0);
        // Each name was somebody's.
        for (const auto& [name, contents] : whole())
            EXPECT_TRUE(fs::exists(folder / name)) << name;
        fs::remove_all(folder);
    }
}

} // namespace boxlift::test
