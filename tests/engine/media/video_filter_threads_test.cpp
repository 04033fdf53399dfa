#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>

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

/// How many threads that were not there before have done a good part of what all did since.
int helpers(const std::map<std::string, std::int64_t>& before, int cores) {
    const auto now = timesOfThreads();
    std::int64_t all = 0;
    for (const auto& [thread, time] : now)
        all += time - (before.contains(thread) ? before.at(thread) : 0);
    return static_cast<int>(std::ranges::count_if(now, [&](const auto& entry) {
        return !before.contains(entry.first) && entry.second > all / cores / 4;
    }));
}

// Each thread gets a slice of every picture from each filter; on a busy machine, where one comes
// late, others do its work, which evens out.
TEST(VideoFilterThreads, ShareEachPictureOfHighRange) {
    constexpr int fewPictures = 3;
    constexpr int mostPictures = 200;
    const auto picture = test::makePicture(AV_PIX_FMT_YUV420P10LE, 1280, 704, {509, 512, 512}, 0);
    picture->color_trc = AVCOL_TRC_SMPTE2084;
    const auto before = timesOfThreads();
    const auto cores = std::min(mostCores, av_cpu_count());
    if (before.empty() || cores < 2)
        GTEST_SKIP() << "one core, or a system that does not tell what threads do";
    VideoFilter filter({640, 352}, {}, {1, 1000}, "test");
    test::FrameCollector frames;
    int pictures = 0;
    int sharing = 0;
    while (pictures < mostPictures && (pictures < fewPictures || sharing < cores - 1)) {
        const av::FramePtr copy(av_frame_clone(picture.get()));
        copy->pts = std::int64_t{40} * pictures;
        filter.push(*copy, frames.sink());
        ++pictures;
        // The filter's own threads live as long as it does.
        sharing = helpers(before, cores);
    }
    EXPECT_EQ(frames.count(), static_cast<std::size_t>(pictures));
    EXPECT_GE(sharing, cores - 1) << "after " << pictures << " pictures";
}

} // namespace

} // namespace boxlift::media
