#include "engine/media/audio_stretch.h"

#include <gtest/gtest.h>

namespace boxlift::media {

namespace {

constexpr AudioEncoder::Settings stereo128{44100, AV_CH_LAYOUT_STEREO, 128'000};
constexpr std::int64_t frame = AudioStretch::frameLength;

PcmSlice silence(std::int64_t position, std::int64_t count) {
    auto buffer = std::make_shared<SampleBuffer>();
    buffer->samples.resize(static_cast<std::size_t>(2 * count));
    return {buffer, 0, position, count};
}

std::vector<std::int64_t> stampsOf(AudioStretch& stretch) {
    std::vector<std::int64_t> stamps;
    while (const av::PacketPtr packet = stretch.next())
        stamps.push_back(packet->pts);
    return stamps;
}

TEST(AudioStretch, GivesOutFromItsBeginToAnOverlapPastItsEnd) {
    constexpr std::int64_t origin = 77;
    constexpr std::int64_t begin = origin + 500 * frame;
    AudioStretch stretch(origin, begin, begin + 100 * frame);
    std::atomic<std::int64_t> encoded = 0;
    bool needsMore = true;
    for (std::int64_t i = 0; needsMore; i += 10)
        needsMore = stretch.feed(silence(origin + i * frame, 10 * frame));
    stretch.encode(stereo128, "test", encoded);
    const auto stamps = stampsOf(stretch);
    ASSERT_EQ(stamps.size(), 100U + 32U);
    EXPECT_EQ(stamps.front(), begin);
    EXPECT_EQ(stamps.back(), begin + 131 * frame);
    EXPECT_EQ(encoded.load(), 100 * frame);
}

TEST(AudioStretch, KeepsThePrimingWhenItIsTheFirst) {
    AudioStretch stretch(77, 77, 77 + 100 * frame);
    std::atomic<std::int64_t> encoded = 0;
    EXPECT_TRUE(stretch.feed(silence(77, 10 * frame)));
    stretch.endOfInput();
    stretch.encode(stereo128, "test", encoded);
    const auto stamps = stampsOf(stretch);
    ASSERT_EQ(stamps.size(), 11U);
    EXPECT_EQ(stamps.front(), 77 - frame);
}

TEST(AudioStretch, TakesNothingBeforeItsLead) {
    const std::int64_t begin = 1000 * frame;
    AudioStretch stretch(0, begin, begin + 100 * frame);
    EXPECT_TRUE(stretch.feed(silence(0, begin - AudioStretch::lead)));
    stretch.endOfInput();
    std::atomic<std::int64_t> encoded = 0;
    stretch.encode(stereo128, "test", encoded);
    EXPECT_TRUE(stampsOf(stretch).empty());
}

TEST(AudioStretch, LetsWaitersGoWhenItIsAborted) {
    AudioStretch stretch(0, 0, 100 * frame);
    stretch.abort();
    std::atomic<std::int64_t> encoded = 0;
    stretch.encode(stereo128, "test", encoded);
    EXPECT_EQ(stretch.next(), nullptr);
}

} // namespace

} // namespace boxlift::media
