#include "engine/media/stretched_encoder.h"

#include <chrono>
#include <gtest/gtest.h>
#include <thread>

#include "engine/media/error.h"
#include "engine/media/joined_encoding.h"

namespace boxlift::media {

namespace {

using namespace std::chrono_literals;
using test::endless;
using test::frame;
using test::makeBuffer;
using test::music;
using test::silence;
using test::stereo128;

/// Seams after every 450 frames, ten seconds and a half, but that the first stretch is longer.
constexpr std::int64_t length = 450 * frame;
constexpr StretchPlan two{length + 60 * frame, length, 2, 2 * length + 65536};

TEST(StretchedEncoder, EndsWellWhereverTheLastStretchEnds) {
    constexpr StretchPlan small{40 * frame, 40 * frame, 2, 2 * 40 * frame + 65536};
    for (const std::int64_t samples :
         {std::int64_t{1}, 40 * frame - 1, 40 * frame, 40 * frame + 1, 41 * frame, 50 * frame + 7,
          72 * frame, 80 * frame + 3 * frame}) {
        std::int64_t sum = 0;
        std::int64_t expected = -frame;
        for (const av::PacketPtr& packet : test::encode(small, music, samples)) {
            ASSERT_EQ(packet->pts, expected) << samples;
            expected += packet->duration;
            sum += packet->duration;
        }
        EXPECT_EQ(sum, samples + frame);
    }
}

TEST(StretchedEncoder, TakesNoMoreThanItMayHoldUntilPacketsAreTaken) {
    StretchedEncoder encoder(stereo128, two, "test");
    encoder.start();
    std::int64_t pushed = 0;
    for (; encoder.isPushImmediate(); pushed += 44100)
        encoder.push(makeBuffer(silence, pushed, 44100), pushed);
    EXPECT_GE(pushed, two.readAhead);
    EXPECT_LT(pushed, two.readAhead + 44100);
    EXPECT_FALSE(encoder.waitForRoom(300ms));
    for (int i = 0; i < 100; ++i)
        EXPECT_NE(encoder.next(), nullptr);
    EXPECT_TRUE(encoder.waitForRoom(0ms));
}

TEST(StretchedEncoder, TellsWhenAllIsTaken) {
    StretchedEncoder encoder(stereo128, test::serialPlan, "test");
    encoder.start();
    encoder.push(makeBuffer(music, 0, 44100), 0);
    encoder.close();
    EXPECT_FALSE(encoder.waitUntilTaken(10ms));
    while (encoder.next()) {
    }
    EXPECT_TRUE(encoder.waitUntilTaken(0ms));
    EXPECT_EQ(encoder.encodedCount(), 44100 + frame);
}

/// Waits, some seconds at most, until more than `count` samples have been encoded.
bool waitUntilEncoded(const StretchedEncoder& encoder, std::int64_t count) {
    for (int i = 0; i < 20'000 && encoder.encodedCount() <= count; ++i)
        std::this_thread::sleep_for(1ms);
    return encoder.encodedCount() > count;
}

TEST(StretchedEncoder, EndsSoonWhenItIsAborted) {
    // The first stretch is short, so that more than that can only be the second one's.
    constexpr StretchPlan plan{100 * frame, 2000 * frame, 2, endless};
    StretchedEncoder encoder(stereo128, plan, "test");
    encoder.start();
    const auto noise = [](int, std::int64_t sample) { return test::noise(sample); };
    const SampleBuffer block = makeBuffer(noise, 0, 10 * frame);
    for (std::int64_t i = 0; i < plan.first + 2 * plan.length; i += 10 * frame)
        ASSERT_TRUE(encoder.push(block, i));
    ASSERT_TRUE(waitUntilEncoded(encoder, plan.first));
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_LT(encoder.encodedCount(), plan.first + plan.length) << "nothing left to abort";
    encoder.abort();
    while (encoder.next()) {
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 300ms);
    EXPECT_LT(encoder.encodedCount(), plan.first + plan.length);
    EXPECT_FALSE(encoder.push(makeBuffer(music, 0, 10), 0));
}

TEST(StretchedEncoder, LetsAFeederGoThatWaitsWhenItIsAborted) {
    StretchedEncoder encoder(stereo128, two, "test");
    encoder.start();
    const std::jthread feeder([&] { test::pushAll(encoder, silence, 100 * length); });
    while (encoder.isPushImmediate())
        std::this_thread::sleep_for(1ms);
    encoder.abort();
    EXPECT_TRUE(encoder.isPushImmediate());
    EXPECT_EQ(encoder.next(), nullptr);
}

TEST(StretchedEncoder, ThrowsWhatAWorkerThrew) {
    StretchedEncoder encoder({37800, AV_CH_LAYOUT_STEREO, 128'000}, two, "test");
    encoder.start();
    encoder.push(makeBuffer(music, 0, 44100), 0);
    EXPECT_THROW(encoder.next(), Error);
}

} // namespace

} // namespace boxlift::media
