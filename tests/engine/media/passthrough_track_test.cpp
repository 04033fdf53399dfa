#include "engine/media/passthrough_track.h"

#include <gtest/gtest.h>

#include <cstring>
#include <optional>

#include "engine/media/error.h"
#include "engine/media/stream_maker.h"

namespace boxlift::media {

namespace {

constexpr AVRational milliseconds{1, 1000};
constexpr std::int64_t none = AV_NOPTS_VALUE;

class PassthroughTrackTest : public testing::Test {
protected:
    PassthroughTrackTest() {
        m_video.time_base = {1, 90000};
        m_video.avg_frame_rate = {25, 1};
        m_audio.time_base = {1, 90000};
        m_audio.codecpar->sample_rate = 44100;
        m_audio.codecpar->frame_size = 1024;
    }

    /// A packet with these stamps, in the source's time base.
    static av::PacketPtr packet(std::int64_t pts, std::int64_t dts, std::int64_t duration = 3600,
                                int flags = AV_PKT_FLAG_KEY) {
        av::PacketPtr made = av::makePacket();
        av_new_packet(made.get(), 10);
        made->pts = pts;
        made->dts = dts;
        made->duration = duration;
        made->flags = flags;
        return made;
    }

    test::StreamMaker m_maker;
    AVStream& m_video = m_maker.add({AV_CODEC_ID_H264, "", {1, 2, 3, 4}});
    AVStream& m_audio = m_maker.add({AV_CODEC_ID_AAC, "", {0x12, 0x10}});
    const std::filesystem::path m_path = "/source";
    PassthroughTrack m_picture{m_video, 5, m_path};
    PassthroughTrack m_sound{m_audio, 6, m_path};
};

std::optional<ErrorKind> kindOfEnd(const PassthroughTrack& track, double declared,
                                   bool isDeclared = true) {
    try {
        track.checkEnd(Time::fromSeconds(declared), isDeclared);
    } catch (const Error& error) {
        return error.kind();
    }
    return std::nullopt;
}

} // namespace

TEST_F(PassthroughTrackTest, MakesAPacketFitForTheOutput) {
    const auto made = packet(9000, 5400);
    made->pos = 1234;
    ASSERT_TRUE(m_picture.prepare(*made, milliseconds));
    EXPECT_EQ(made->pts, 100);
    EXPECT_EQ(made->dts, 60);
    EXPECT_EQ(made->duration, 40);
    EXPECT_EQ(made->stream_index, 5);
    EXPECT_EQ(made->pos, -1);
    EXPECT_EQ(made->size, 10);
}

TEST_F(PassthroughTrackTest, DropsEmptyPackets) {
    const auto empty = av::makePacket();
    empty->pts = empty->dts = 0;
    EXPECT_FALSE(m_picture.prepare(*empty, milliseconds));
    EXPECT_FALSE(m_picture.hasMedia());
}

TEST_F(PassthroughTrackTest, WaitsForAKeyFrameWhenAsked) {
    m_picture.skipToKey();
    EXPECT_FALSE(m_picture.prepare(*packet(0, 0, 3600, 0), milliseconds));
    EXPECT_FALSE(m_picture.hasMedia());
    EXPECT_TRUE(m_picture.prepare(*packet(3600, 3600), milliseconds));
    EXPECT_TRUE(m_picture.prepare(*packet(7200, 7200, 3600, 0), milliseconds));
    EXPECT_TRUE(m_picture.hasMedia());
    m_sound.skipToKey();
    EXPECT_TRUE(m_sound.prepare(*packet(0, 0, 2090, 0), milliseconds));
}

TEST_F(PassthroughTrackTest, KeepsTheCadenceOfSoundWithCoarseStamps) {
    // A frame of 1024 samples lasts 2089.8 ticks.
    std::int64_t last = none;
    for (std::int64_t i = 0; i < 200; ++i) {
        const std::int64_t stamp = i * 1024 * 90000 / 44100;
        const auto made = packet(stamp, stamp, 2089);
        ASSERT_TRUE(m_sound.prepare(*made, {1, 44100}));
        EXPECT_EQ(made->duration, 1024);
        EXPECT_EQ(made->pts, made->dts);
        if (last != none) {
            EXPECT_EQ(made->dts - last, 1024) << i;
        }
        last = made->dts;
    }
}

TEST_F(PassthroughTrackTest, PutsSoundWithoutStampsEndToEnd) {
    for (int i = 0; i < 3; ++i) {
        const auto made = packet(none, none, 0);
        ASSERT_TRUE(m_sound.prepare(*made, {1, 44100}));
        EXPECT_NEAR(static_cast<double>(made->dts), 1024.0 * i, 2);
        EXPECT_EQ(made->duration, 1024);
    }
}

TEST_F(PassthroughTrackTest, CompletesStampsOfPicturesInOrder) {
    const auto first = packet(3600, none, 0);
    ASSERT_TRUE(m_picture.prepare(*first, milliseconds));
    EXPECT_EQ(first->dts, 40);
    EXPECT_EQ(first->duration, 40);
    const auto second = packet(none, 7200, 0);
    ASSERT_TRUE(m_picture.prepare(*second, milliseconds));
    EXPECT_EQ(second->pts, 80);
}

TEST_F(PassthroughTrackTest, CannotGuessTheStampsOfReorderedPictures) {
    m_video.codecpar->video_delay = 1;
    EXPECT_THROW(m_picture.prepare(*packet(3600, none), milliseconds), Error);
    EXPECT_THROW(m_picture.prepare(*packet(none, 3600), milliseconds), Error);
    EXPECT_THROW(m_picture.prepare(*packet(none, none), milliseconds), Error);
}

TEST_F(PassthroughTrackTest, CannotPlaceAPictureWithoutAnyStamp) {
    EXPECT_THROW(m_picture.prepare(*packet(none, none), milliseconds), Error);
}

TEST_F(PassthroughTrackTest, MovesDecodingBackByTheLead) {
    m_picture.setDecodingLead(7200);
    const auto made = packet(9000, 9000);
    ASSERT_TRUE(m_picture.prepare(*made, milliseconds));
    EXPECT_EQ(made->pts, 100);
    EXPECT_EQ(made->dts, 20);
}

TEST_F(PassthroughTrackTest, MendsASmallSlip) {
    ASSERT_TRUE(m_picture.prepare(*packet(90000, 90000), milliseconds));
    const auto slipped = packet(81000, 81000);
    ASSERT_TRUE(m_picture.prepare(*slipped, milliseconds));
    EXPECT_EQ(slipped->dts, 1001);
    EXPECT_EQ(slipped->pts, 1001);
    const auto same = packet(90000, 90000);
    ASSERT_TRUE(m_picture.prepare(*same, milliseconds));
    EXPECT_EQ(same->dts, 1002);
}

TEST_F(PassthroughTrackTest, FailsOnAJumpBack) {
    ASSERT_TRUE(m_picture.prepare(*packet(90000, 90000), milliseconds));
    EXPECT_THROW(m_picture.prepare(*packet(0, 0), milliseconds), Error);
}

TEST_F(PassthroughTrackTest, FailsWhenTheDecodersParametersChange) {
    const auto withHeader = [](std::initializer_list<std::uint8_t> header) {
        auto made = packet(0, 0);
        std::uint8_t* data =
            av_packet_new_side_data(made.get(), AV_PKT_DATA_NEW_EXTRADATA, header.size());
        std::copy(header.begin(), header.end(), data);
        return made;
    };
    EXPECT_TRUE(m_picture.prepare(*withHeader({1, 2, 3, 4}), milliseconds));
    EXPECT_THROW(m_picture.prepare(*withHeader({1, 2, 3, 5}), milliseconds), Error);
    EXPECT_THROW(m_picture.prepare(*withHeader({1, 2, 3}), milliseconds), Error);
}

TEST_F(PassthroughTrackTest, MindsATrackThatHasNotBegun) {
    EXPECT_EQ(kindOfEnd(m_picture, 0.5), ErrorKind::sourceEndsEarly);
    EXPECT_EQ(kindOfEnd(m_picture, 0), std::nullopt);
    EXPECT_EQ(kindOfEnd(m_picture, 0.5, false), std::nullopt);
}

TEST_F(PassthroughTrackTest, MindsATrackThatEndsEarly) {
    ASSERT_TRUE(m_picture.prepare(*packet(90000, 90000), milliseconds));
    EXPECT_EQ(kindOfEnd(m_picture, 2), std::nullopt);
    EXPECT_EQ(kindOfEnd(m_picture, 2.1), ErrorKind::sourceEndsEarly);
    EXPECT_EQ(kindOfEnd(m_picture, 2.1, false), std::nullopt);
}

} // namespace boxlift::media
