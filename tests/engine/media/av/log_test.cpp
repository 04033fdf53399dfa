#include "engine/media/av/log.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "engine/media/av/ffmpeg.h"

namespace boxlift::media::av {

TEST(Log, KeepsTheLastErrorOrWarning) {
    captureLog();
    av_log(nullptr, AV_LOG_ERROR, "an error %d\n", 1);
    EXPECT_EQ(takeLastLogLine(), "an error 1");
    av_log(nullptr, AV_LOG_WARNING, "a warning\r\n");
    EXPECT_EQ(takeLastLogLine(), "a warning");
}

TEST(Log, PassesOverChatter) {
    captureLog();
    av_log(nullptr, AV_LOG_ERROR, "an error\n");
    av_log(nullptr, AV_LOG_INFO, "chatter\n");
    av_log(nullptr, AV_LOG_DEBUG, "more\n");
    EXPECT_EQ(takeLastLogLine(), "an error");
}

TEST(Log, PrintsNothing) {
    captureLog();
    testing::internal::CaptureStderr();
    av_log(nullptr, AV_LOG_FATAL, "loud\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(Log, IsEachThreadsOwn) {
    captureLog();
    av_log(nullptr, AV_LOG_ERROR, "here\n");
    std::string before;
    std::string after;
    std::thread other([&] {
        captureLog();
        before = takeLastLogLine();
        av_log(nullptr, AV_LOG_ERROR, "there\n");
        after = takeLastLogLine();
    });
    other.join();
    EXPECT_EQ(before, "none");
    EXPECT_EQ(after, "there");
    EXPECT_EQ(takeLastLogLine(), "here");
}

TEST(Log, CutsLongLines) {
    captureLog();
    const std::string line(5000, 'x');
    av_log(nullptr, AV_LOG_ERROR, "%s\n", line.c_str());
    const std::string kept = takeLastLogLine();
    EXPECT_GE(kept.size(), 100U);
    EXPECT_LT(kept.size(), 1000U);
    EXPECT_EQ(kept, std::string(kept.size(), 'x'));
}

} // namespace boxlift::media::av
