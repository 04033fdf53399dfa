#include "worker/limits.h"

#include <cstdlib>
#include <new>
#include <vector>

#include <gtest/gtest.h>
#include <sys/resource.h>

namespace boxlift::worker {
namespace {

constexpr std::size_t mebibyte = 1 << 20;

/// Whether so much can be had, in blocks of the size of a picture.
bool canTake(std::size_t mebibytes) {
    try {
        std::vector<std::vector<char>> blocks;
        for (std::size_t i = 0; i < mebibytes / 8; ++i)
            blocks.emplace_back(8 * mebibyte, 'x');
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

rlim_t coreSize() {
    rlimit limits{};
    ::getrlimit(RLIMIT_CORE, &limits);
    return limits.rlim_max;
}

} // namespace

TEST(MemoryLimit, OfAConversionIsHalfOfTheMachines) {
    EXPECT_EQ(memoryLimit(Role::analysis), 512 * mebibyte);
    EXPECT_GT(memoryLimit(Role::conversion), 512 * mebibyte);
}

// In a process of its own, which tells by its status.
TEST(LimitResources, RefusesMemoryBeyondTheLimit) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers take more memory than any limit";
#endif
    const auto statusOf = [](std::size_t mebibytes) {
        limitResources(Role::analysis);
        std::_Exit(canTake(mebibytes) ? 0 : 1);
    };
    EXPECT_EXIT(statusOf(384), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(statusOf(640), testing::ExitedWithCode(1), "");
}

TEST(LimitResources, LeavesNoCoreFiles) {
    const auto statusOf = [] {
        limitResources(Role::conversion);
        std::_Exit(coreSize() == 0 ? 0 : 1);
    };
    EXPECT_EXIT(statusOf(), testing::ExitedWithCode(0), "");
}

} // namespace boxlift::worker
