#include "engine/media/dolby_vision.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "engine/media/av/compat.h"
#include "engine/media/stream_maker.h"

namespace boxlift::media::dolby_vision {

namespace {

AVStream& streamOf(test::StreamMaker& maker, int profile, const char* tag = "hvc1") {
    AVStream& stream = maker.add({.codec = AV_CODEC_ID_HEVC, .tag = tag});
    AVDOVIDecoderConfigurationRecord record{};
    record.dv_version_major = 1;
    record.dv_profile = static_cast<std::uint8_t>(profile);
    record.dv_level = 6;
    record.rpu_present_flag = record.bl_present_flag = 1;
    record.dv_bl_signal_compatibility_id = profile == 5 ? 0 : 4;
    std::memcpy(av::newStreamSideData(stream, AV_PKT_DATA_DOVI_CONF, sizeof(record)), &record,
                sizeof(record));
    return stream;
}

} // namespace

TEST(DolbyVision, IsDescribedInABox) {
    test::StreamMaker maker;
    const auto box = configurationBox(streamOf(maker, 8));
    ASSERT_EQ(box.size(), 32U);
    const box_bytes::Bytes start{0, 0, 0, 32, 'd', 'v', 'v', 'C', 1, 0, 0x10, 0x35, 0x40, 0};
    EXPECT_TRUE(std::equal(start.begin(), start.end(), box.begin()));
}

TEST(DolbyVision, HasBoxesOfItsGenerations) {
    test::StreamMaker maker;
    EXPECT_EQ(configurationBox(streamOf(maker, 5)).at(6), 'c');
    EXPECT_EQ(configurationBox(streamOf(maker, 7)).at(6), 'c');
    EXPECT_EQ(configurationBox(streamOf(maker, 10)).at(6), 'v');
    EXPECT_EQ(configurationBox(streamOf(maker, 20)).at(6), 'w');
}

TEST(DolbyVision, IsNotDescribedWhereThereIsNone) {
    test::StreamMaker maker;
    EXPECT_TRUE(configurationBox(maker.add({.codec = AV_CODEC_ID_HEVC, .tag = "dvh1"})).empty());
}

TEST(DolbyVision, HasNoPlainBaseByItsNameOrItsProfile) {
    test::StreamMaker maker;
    EXPECT_TRUE(lacksPlainBase(maker.add({.codec = AV_CODEC_ID_HEVC, .tag = "dvhe"})));
    EXPECT_TRUE(lacksPlainBase(maker.add({.codec = AV_CODEC_ID_HEVC, .tag = "dvh1"})));
    EXPECT_TRUE(lacksPlainBase(streamOf(maker, 5)));
    EXPECT_FALSE(lacksPlainBase(streamOf(maker, 8)));
    EXPECT_FALSE(lacksPlainBase(maker.add({.codec = AV_CODEC_ID_HEVC, .tag = "hvc1"})));
}

} // namespace boxlift::media::dolby_vision
