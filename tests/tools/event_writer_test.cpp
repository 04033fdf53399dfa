#include "drive/event_writer.h"

#include <algorithm>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace boxlift::drive {
namespace {

using testing::ElementsAre;

TEST(EventWriter, HandsOverWholeLines) {
    std::vector<std::string> lines;
    EventWriter writer(
        [&](std::string_view line) {
            lines.emplace_back(line);
            return true;
        },
        std::stop_source());
    writer.write("{}");
    writer.write("{\"a\":1}");

    EXPECT_THAT(lines, ElementsAre("{}\n", "{\"a\":1}\n"));
    EXPECT_FALSE(writer.isBroken());
}

TEST(EventWriter, RequestsAStopAndFallsSilentWhenALineCannotBeWritten) {
    int calls = 0;
    std::stop_source stop;
    EventWriter writer([&](std::string_view) { return ++calls < 2; }, stop);
    writer.write("first");
    EXPECT_FALSE(stop.stop_requested());
    writer.write("second");
    writer.write("third");

    EXPECT_TRUE(stop.stop_requested());
    EXPECT_TRUE(writer.isBroken());
    EXPECT_EQ(calls, 2);
}

TEST(EventWriter, LetsOneThreadWriteAtATime) {
    int inside = 0;
    int most = 0;
    int lines = 0;
    EventWriter writer(
        [&](std::string_view) {
            most = std::max(most, ++inside);
            std::this_thread::yield();
            ++lines;
            --inside;
            return true;
        },
        std::stop_source());
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 4; ++i)
            threads.emplace_back([&] {
                for (int n = 0; n < 100; ++n)
                    writer.write("line");
            });
    }
    EXPECT_EQ(lines, 400);
    EXPECT_EQ(most, 1);
}

} // namespace
} // namespace boxlift::drive
