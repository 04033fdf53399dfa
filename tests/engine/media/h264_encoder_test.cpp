#include "engine/media/h264_encoder.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace boxlift::media {

namespace {

using Names = std::vector<std::string>;

/// The names in the order in which they are tried, where these encoders are there.
Names tried(const std::set<std::string>& there) {
    Names names;
    for (const H264Encoder& encoder :
         h264Encoders([&there](const char* name) { return there.contains(name); }))
        names.emplace_back(encoder.name);
    return names;
}

TEST(H264Encoder, IsInSoftwareWhereThereIsNoOther) {
    EXPECT_EQ(tried({"libx264", "mpeg4", "h264_v4l2m2m"}), Names{"libx264"});
}

TEST(H264Encoder, IsTheHardwareOneFirstAndThenInSoftware) {
    EXPECT_EQ(tried({"libx264", "h264_videotoolbox"}), (Names{"h264_videotoolbox", "libx264"}));
}

TEST(H264Encoder, IsTheHardwareOneWhereThereIsNoOther) {
    EXPECT_EQ(tried({"h264_videotoolbox"}), Names{"h264_videotoolbox"});
}

TEST(H264Encoder, IsNoneThatWeHaveNoSettingsFor) {
    EXPECT_EQ(tried({"libopenh264"}), Names());
}

TEST(H264Encoder, IsToldTheQualityThatWasMeasuredInSoftware) {
    const auto encoders =
        h264Encoders([](const char* name) { return name == std::string("libx264"); });
    ASSERT_EQ(encoders.size(), 1U);
    EXPECT_EQ(encoders[0].scale, H264Encoder::Scale::rateFactor);
    EXPECT_DOUBLE_EQ(encoders[0].quality, 17);
    EXPECT_STREQ(encoders[0].effort, "veryfast");
    EXPECT_STREQ(encoders[0].withoutAvx512, "asm=AVX2,FMA3,BMI2,LZCNT");
}

TEST(H264Encoder, UsesAvx512WhereNoRestOfARowRemains) {
    for (const int width : {128, 1280, 1920, 3840, 1280 - 15})
        EXPECT_TRUE(H264Encoder::canUseAvx512(width)) << width;
    for (const int width : {2, 32, 320, 720, 854, 1280 - 16, 1280 + 1})
        EXPECT_FALSE(H264Encoder::canUseAvx512(width)) << width;
}

} // namespace

} // namespace boxlift::media
