#include "engine/media/pcm_slice.h"

#include <gtest/gtest.h>

namespace boxlift::media {

namespace {

/// Ten samples of two channels, 1000, -1000, 1001, -1001 and so on, at 500.
PcmSlice tenAt500() {
    auto buffer = std::make_shared<SampleBuffer>();
    for (int i = 0; i < 10; ++i) {
        buffer->samples.push_back(static_cast<std::int16_t>(1000 + i));
        buffer->samples.push_back(static_cast<std::int16_t>(-1000 - i));
    }
    return {buffer, 0, 500, 10};
}

void expectPart(const PcmSlice& part, std::int64_t first, std::int64_t position,
                std::int64_t count) {
    EXPECT_EQ(part.first, first);
    EXPECT_EQ(part.position, position);
    EXPECT_EQ(part.count, count);
}

TEST(PcmSlice, IsClippedAtBothEnds) {
    expectPart(clip(tenAt500(), 0, 1000), 0, 500, 10);
    expectPart(clip(tenAt500(), 503, 1000), 3, 503, 7);
    expectPart(clip(tenAt500(), 0, 504), 0, 500, 4);
    expectPart(clip(clip(tenAt500(), 502, 508), 504, 506), 4, 504, 2);
}

TEST(PcmSlice, IsEmptyOutsideTheRange) {
    EXPECT_EQ(clip(tenAt500(), 510, 600).count, 0);
    EXPECT_EQ(clip(tenAt500(), 700, 800).count, 0);
    EXPECT_EQ(clip(tenAt500(), 0, 500).count, 0);
    EXPECT_EQ(clip(tenAt500(), 0, 100).count, 0);
}

TEST(PcmSlice, BecomesPlanesOfFloatingPoint) {
    const AudioRun run = toRun(clip(tenAt500(), 503, 506));
    EXPECT_EQ(run.position, 503);
    EXPECT_EQ(run.count, 3);
    ASSERT_EQ(run.frame->nb_samples, 3);
    for (int channel = 0; channel < 2; ++channel) {
        const auto* plane = reinterpret_cast<const float*>(run.frame->extended_data[channel]);
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(plane[i], static_cast<float>((channel == 0 ? 1 : -1) * (1003 + i)) / 32768);
    }
}

} // namespace

} // namespace boxlift::media
