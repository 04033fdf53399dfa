#include "queue/worker_program.h"

#include <gtest/gtest.h>

namespace boxlift {

namespace fs = std::filesystem;

TEST(WorkerProgram, LiesBesideTheRunningProgramAsItIsBuilt) {
    EXPECT_TRUE(fs::equivalent(workerProgram(), BOXLIFT_WORKER));
}

TEST(RunningProgram, IsThisOne) {
    EXPECT_EQ(runningProgram().filename(), "boxlift_queue_tests");
}

} // namespace boxlift
