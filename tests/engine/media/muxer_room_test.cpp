#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <thread>

#include "engine/media/av/demuxer.h"
#include "engine/media/muxer.h"
#include "engine/media/passthrough_copier.h"
#include "engine/media/source_fixture.h"
#include "model/cancelled.h"
#include "support/media_boxes.h"

namespace boxlift::media {

namespace {

using test::namesIn;
using Names = std::vector<std::string>;

constexpr std::int64_t large = 100 << 20;

/// Muxers that write one track of made-up samples, with the index in front.
class MuxerRoomTest : public test::SourceTest {
protected:
    std::unique_ptr<Muxer> begin(const ExpectedSamples& expected) {
        m_stop = {};
        auto muxer = std::make_unique<Muxer>(output(), FileType::AVFileTypeMPEG4, IndexPlace::front,
                                             m_stop.get_token());
        AVStream& stream = muxer->addStream();
        stream.time_base = {1, 48000};
        stream.codecpar->codec_type = AVMEDIA_TYPE_AUDIO;
        stream.codecpar->codec_id = AV_CODEC_ID_AAC;
        stream.codecpar->sample_rate = 48000;
        av_channel_layout_default(&stream.codecpar->ch_layout, 2);
        giveHeader(*stream.codecpar);
        muxer->expect(0, expected);
        muxer->writeHeader();
        return muxer;
    }

    static void giveHeader(AVCodecParameters& parameters) {
        constexpr std::array<std::uint8_t, 2> stereoAt48000{0x11, 0x90};
        parameters.extradata = static_cast<std::uint8_t*>(
            av_mallocz(stereoAt48000.size() + AV_INPUT_BUFFER_PADDING_SIZE));
        parameters.extradata_size = stereoAt48000.size();
        std::ranges::copy(stereoAt48000, parameters.extradata);
    }

    /// Samples that number themselves and are of unequal length.
    static void write(Muxer& muxer, int count, int size) {
        const av::PacketPtr packet = av::makePacket();
        std::int64_t time = 0;
        for (int i = 0; i < count; ++i) {
            ASSERT_EQ(av_new_packet(packet.get(), size), 0);
            std::memset(packet->data, 0, static_cast<std::size_t>(size));
            std::memcpy(packet->data, &i, sizeof(i));
            packet->pts = packet->dts = time;
            packet->duration = 1000 + i % 2;
            packet->flags = AV_PKT_FLAG_KEY;
            time += packet->duration;
            muxer.write(*packet);
        }
    }

    /// How many samples of the output follow one another as they should.
    int readBack() const {
        const auto demuxer =
            av::Demuxer::open(InputFile::open(output()), av::ProbeDepth::header, {});
        const av::PacketPtr packet = av::makePacket();
        int count = 0;
        while (demuxer->read(*packet)) {
            const av::PacketUnref guard{*packet};
            int number = -1;
            std::memcpy(&number, packet->data, sizeof(number));
            if (number != count)
                break;
            ++count;
        }
        return count;
    }

    Names boxes() const { return boxlift::test::topLevelBoxTypes(output()); }

    /// Whether the stop came while the media was being moved.
    bool stopsWhileMoving() {
        const auto muxer = begin({.bytes = large});
        write(*muxer, 20'000, 4096);
        const std::jthread stopper([&](const std::stop_token& enough) {
            while (!enough.stop_requested() && muxer->finishedFraction() == 0)
                std::this_thread::yield();
            m_stop.request_stop();
        });
        try {
            muxer->finish();
            return false;
        } catch (const Cancelled&) {
            return muxer->finishedFraction() > 0;
        }
    }

    std::stop_source m_stop;
};

} // namespace

TEST_F(MuxerRoomTest, WritesEachByteOnceWhenItKnewHowManySamplesWouldCome) {
    constexpr int count = 200'000;
    const auto muxer =
        begin({.count = count, .timeRuns = count, .bytes = large, .isCertain = true});
    EXPECT_TRUE(muxer->isRoomCertain());
    write(*muxer, count, 40);
    muxer->finish();
    const auto size = static_cast<double>(std::filesystem::file_size(output()));
    EXPECT_LT(static_cast<double>(muxer->bytesWritten()), 1.01 * size);
    EXPECT_EQ(boxes(), (Names{"ftyp", "moov", "free", "mdat"}));
    EXPECT_EQ(readBack(), count);
}

TEST_F(MuxerRoomTest, MovesTheMediaWhenMoreSamplesHaveComeThanItKnewOf) {
    constexpr int count = 20'000;
    const auto muxer = begin({.count = 10, .timeRuns = 10, .bytes = large});
    EXPECT_FALSE(muxer->isRoomCertain());
    write(*muxer, count, 200);
    const std::int64_t before = muxer->bytesWritten();
    muxer->finish();
    EXPECT_GT(muxer->bytesWritten(), before + 200 * count);
    EXPECT_EQ(boxes(), (Names{"ftyp", "moov", "mdat"}));
    EXPECT_EQ(readBack(), count);
}

TEST_F(MuxerRoomTest, LeavesNoRoomInASmallFile) {
    const auto muxer = begin({.count = 100, .timeRuns = 100, .bytes = 1'000'000});
    EXPECT_FALSE(muxer->isRoomCertain());
    write(*muxer, 100, 40);
    muxer->finish();
    EXPECT_EQ(boxes(), (Names{"ftyp", "moov", "mdat"}));
    EXPECT_EQ(readBack(), 100);
}

TEST_F(MuxerRoomTest, StopsWhileItMovesTheMedia) {
    constexpr int tries = 20;
    bool hasStopped = false;
    for (int i = 0; i < tries && !hasStopped; ++i) {
        std::filesystem::remove(output());
        hasStopped = stopsWhileMoving();
    }
    EXPECT_TRUE(hasStopped);
    EXPECT_EQ(namesIn(folder()), Names{});
}

} // namespace boxlift::media
