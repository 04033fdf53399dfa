#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "engine/media/picture_maker.h"
#include "engine/media/video_filter.h"

namespace boxlift::media {

namespace {

namespace fs = std::filesystem;

/// The library takes no more of them.
constexpr int mostCores = 16;

/// What each thread of this process has had of the processors, in nanoseconds, by its number.
/// Empty where the system does not tell.
std::map<std::string, std::int64_t> timesOfThreads() {
    std::map<std::string, std::int64_t> times;
    std::error_code error;
    for (const auto& thread : fs::directory_iterator("/proc/self/task", error)) {
        std::int64_t nanoseconds = 0;
        if (std::ifstream(thread.path() / "schedstat") >> nanoseconds)
            times[thread.path().filename()] = nanoseconds;
    }
    return times;
}

TEST(VideoFilterThreads, ShareEachPictureOfHighRange) {
    std::vector<av::FramePtr> pictures;
    for (const std::int64_t pts : {0, 40, 80}) {
        pictures.push_back(
            test::makePicture(AV_PIX_FMT_YUV420P10LE, 1280, 704, {509, 512, 512}, pts));
        pictures.back()->color_trc = AVCOL_TRC_SMPTE2084;
    }
    const auto before = timesOfThreads();
    const auto cores = std::min(mostCores, av_cpu_count());
    if (before.empty() || cores < 2)
        GTEST_SKIP() << "one core, or a system that does not tell what threads do";
    VideoFilter filter({640, 352}, {}, {1, 1000}, "test");
    test::FrameCollector frames;
    for (const av::FramePtr& picture : pictures)
        filter.push(*picture, frames.sink());
    ASSERT_EQ(frames.count(), 3U);

    // The filter's own threads live as long as it does. Each gets a slice of every picture from
    // each filter, but where there are too many threads for one. Sanitizers have idle threads.
    const auto after = timesOfThreads();
    std::int64_t all = 0;
    for (const auto& [thread, time] : after)
        all += time - (before.contains(thread) ? before.at(thread) : 0);
    const auto helps = [&](const auto& entry) {
        return !before.contains(entry.first) && entry.second > all / cores / 4;
    };
    EXPECT_GE(std::count_if(after.begin(), after.end(), helps), cores - 1);
}

} // namespace

} // namespace boxlift::media
