#include "engine/media/audio_channel_layout.h"

#include <gtest/gtest.h>

namespace boxlift::media {

namespace {

ChannelLayout withoutOrder(int count) {
    AVChannelLayout layout{};
    layout.order = AV_CHANNEL_ORDER_UNSPEC;
    layout.nb_channels = count;
    return ChannelLayout::interpret(layout);
}

TEST(ChannelLayout, TakesChannelsWithoutAnOrderForTheUsualArrangement) {
    EXPECT_EQ(withoutOrder(1), ChannelLayout::ofMask(AV_CH_LAYOUT_MONO));
    EXPECT_EQ(withoutOrder(2), ChannelLayout::ofMask(AV_CH_LAYOUT_STEREO));
    EXPECT_EQ(withoutOrder(3), ChannelLayout::ofMask(AV_CH_LAYOUT_SURROUND));
    EXPECT_EQ(withoutOrder(6), ChannelLayout::ofMask(AV_CH_LAYOUT_5POINT1_BACK));
    EXPECT_EQ(withoutOrder(8), ChannelLayout::ofMask(AV_CH_LAYOUT_7POINT1));
}

TEST(ChannelLayout, LeavesManyChannelsWithoutAnOrderUnnamed) {
    const ChannelLayout layout = withoutOrder(24);
    EXPECT_EQ(layout.count(), 24);
    EXPECT_EQ(layout.channel(0), AV_CHAN_NONE);
    EXPECT_EQ(layout.speakers(), 0U);
}

TEST(ChannelLayout, HearsASingleChannelFromTheMiddle) {
    const ChannelLayout left = ChannelLayout::ofMask(AV_CH_FRONT_LEFT);
    EXPECT_EQ(ChannelLayout::interpret(left.get()), ChannelLayout::ofMask(AV_CH_LAYOUT_MONO));
}

TEST(ChannelLayout, CountsSideSpeakersAsBackOnes) {
    EXPECT_EQ(ChannelLayout::ofMask(AV_CH_LAYOUT_5POINT1).speakers(),
              std::uint64_t{AV_CH_LAYOUT_5POINT1_BACK});
}

TEST(ChannelLayout, CopiesLayoutsThatOwnMemory) {
    ChannelLayout custom;
    ASSERT_EQ(av_channel_layout_from_string(custom.address(), "FR+FL"), 0);
    const ChannelLayout copy = custom;
    custom = ChannelLayout();
    EXPECT_EQ(copy.channel(0), AV_CHAN_FRONT_RIGHT);
    EXPECT_EQ(copy.channel(1), AV_CHAN_FRONT_LEFT);
}

} // namespace

} // namespace boxlift::media
