#include <cstdlib>

#include <gtest/gtest.h>

#include "faults/drive_runs.h"
#include "faults/program.h"

namespace boxlift::test {

TEST_F(DriveRuns, AClockThatJumpsChangesNothing) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers must be loaded first";
#endif
    const auto folder = newFolder("out");
    const auto prepare = [] { ::setenv("LD_PRELOAD", BOXLIFT_JUMPING_CLOCK, 1); };
    EXPECT_EQ(Program(command(folder), prepare).wait(), 0);
    expectWholeFilesOnly(folder);
    for (const auto& [name, contents] : whole())
        EXPECT_TRUE(std::filesystem::exists(folder / name)) << name;
}

} // namespace boxlift::test
