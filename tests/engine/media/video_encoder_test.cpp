#include "engine/media/video_encoder.h"

#include <gtest/gtest.h>

#ifdef __GLIBC__
#include <malloc.h>
#endif

#include <string>
#include <vector>

#include "engine/media/av/compat.h"
#include "engine/media/picture_maker.h"

namespace boxlift::media {

namespace {

constexpr AVRational milliseconds{1, 1000};

struct Encoded {
    std::int64_t pts;
    std::int64_t dts;
    std::int64_t duration;
    bool isKey;
};

/// An encoder of small gray pictures and what came out of it.
class EncoderTest {
public:
    explicit EncoderTest(const VideoEncoder::Input& input)
        : m_encoder(
              encodeSettings({64, 48}, {1, 1}, 0, ExportPreset::AVAssetExportPresetHighestQuality),
              input, "test") {}

    void push(std::int64_t pts, std::int64_t duration = 0) {
        const int luma = 16 + m_count++ * 7 % 200;
        const auto picture = test::makePicture(AV_PIX_FMT_YUV420P, 64, 48, {luma, 128, 128}, pts);
        av::setFrameDuration(*picture, duration);
        // As if the source had key frames only.
        picture->pict_type = AV_PICTURE_TYPE_I;
        m_encoder.push(*picture, sink());
    }
    /// By presentation time.
    std::vector<Encoded> finish() {
        m_encoder.finish(sink());
        std::sort(m_packets.begin(), m_packets.end(),
                  [](const Encoded& a, const Encoded& b) { return a.pts < b.pts; });
        return m_packets;
    }
    const VideoEncoder& encoder() const { return m_encoder; }

private:
    VideoEncoder::Sink sink() {
        return [this](AVPacket& packet) {
            if (!m_packets.empty()) {
                EXPECT_GT(packet.dts, m_packets.back().dts);
            }
            EXPECT_LE(packet.dts, packet.pts);
            m_packets.push_back(
                {packet.pts, packet.dts, packet.duration, (packet.flags & AV_PKT_FLAG_KEY) != 0});
        };
    }

    VideoEncoder m_encoder;
    int m_count = 0;
    std::vector<Encoded> m_packets;
};

VideoEncoder::Input atRate(int rate) {
    VideoEncoder::Input input;
    input.timeBase = milliseconds;
    input.frameRate = {rate, 1};
    return input;
}

std::vector<std::int64_t> stamps(const std::vector<Encoded>& packets) {
    std::vector<std::int64_t> result;
    for (const Encoded& packet : packets)
        result.push_back(packet.pts);
    return result;
}

TEST(VideoEncoder, KeepsUnevenTimeStampsAndShowsEachPictureUntilTheNext) {
    EncoderTest test(atRate(25));
    const std::vector<std::int64_t> times{0, 40, 55, 300, 1300, 1310, 1400};
    for (const std::int64_t pts : times)
        test.push(pts, 40);
    const auto packets = test.finish();
    ASSERT_EQ(stamps(packets), times);
    for (std::size_t i = 0; i + 1 < packets.size(); ++i)
        EXPECT_EQ(packets[i].duration, times[i + 1] - times[i]);
    EXPECT_EQ(packets.back().duration, 40);
}

TEST(VideoEncoder, KeepsALateStart) {
    EncoderTest test(atRate(25));
    for (const std::int64_t pts : {5000, 5040, 5080})
        test.push(pts);
    EXPECT_EQ(stamps(test.finish()), (std::vector<std::int64_t>{5000, 5040, 5080}));
}

TEST(VideoEncoder, DropsPicturesThatDoNotGoForward) {
    EncoderTest test(atRate(25));
    for (const std::int64_t pts : {0, 40, 40, 20, 80})
        test.push(pts);
    EXPECT_EQ(stamps(test.finish()), (std::vector<std::int64_t>{0, 40, 80}));
}

TEST(VideoEncoder, DropsWhatLiesBeforeZero) {
    EncoderTest test(atRate(25));
    for (const std::int64_t pts : {-80, -40, -10, 30})
        test.push(pts, 40);
    EXPECT_EQ(stamps(test.finish()), (std::vector<std::int64_t>{0, 30}));
}

TEST(VideoEncoder, FindsAPlaceForPicturesWithoutATimeStamp) {
    EncoderTest test(atRate(25));
    test.push(AV_NOPTS_VALUE);
    test.push(AV_NOPTS_VALUE);
    test.push(100);
    test.push(AV_NOPTS_VALUE);
    EXPECT_EQ(stamps(test.finish()), (std::vector<std::int64_t>{0, 40, 100, 140}));
}

TEST(VideoEncoder, EndsTheLastPictureWhereTheTrackEnds) {
    VideoEncoder::Input input = atRate(25);
    input.end = 90;
    EncoderTest test(input);
    for (const std::int64_t pts : {0, 40, 80})
        test.push(pts, 40);
    EXPECT_EQ(test.finish().back().duration, 10);
}

TEST(VideoEncoder, SetsAKeyFrameEveryFewSeconds) {
    EncoderTest test(atRate(25));
    // One picture per second, whatever the rate says.
    for (std::int64_t second = 0; second < 30; ++second)
        test.push(second * 1000);
    const auto packets = test.finish();
    ASSERT_EQ(packets.size(), 30U);
    std::int64_t last = 0;
    int keys = 0;
    for (const Encoded& packet : packets) {
        EXPECT_LE(packet.pts - last, 4000);
        if (packet.isKey) {
            last = packet.pts;
            ++keys;
        }
    }
    EXPECT_TRUE(packets.front().isKey);
    EXPECT_LT(keys, 30) << "the source's key frames are no wish";
}

TEST(VideoEncoder, DescribesWhatItMakes) {
    VideoEncoder::Input input = atRate(25);
    input.colour = {AVCOL_PRI_BT709, AVCOL_TRC_BT709, AVCOL_SPC_BT709, AVCOL_RANGE_MPEG};
    const EncoderTest test(input);
    const av::OutputContextPtr context(avformat_alloc_context());
    AVStream& stream = *avformat_new_stream(context.get(), nullptr);
    test.encoder().describe(stream);
    const AVCodecParameters& parameters = *stream.codecpar;
    EXPECT_EQ(parameters.codec_id, AV_CODEC_ID_H264);
    EXPECT_EQ(parameters.profile, av::profileH264High);
    EXPECT_EQ(parameters.width, 64);
    EXPECT_EQ(parameters.height, 48);
    EXPECT_GT(parameters.extradata_size, 0);
    EXPECT_EQ(VideoColour::of(parameters), input.colour);
    EXPECT_EQ(av_cmp_q(stream.time_base, milliseconds), 0);
}

TEST(VideoEncoder, TakesUnknownAndImpossibleRates) {
    for (const AVRational rate : {AVRational{0, 1}, AVRational{0, 0}, AVRational{90000, 1}}) {
        VideoEncoder::Input input;
        input.timeBase = {1, 90000};
        input.frameRate = rate;
        EncoderTest test(input);
        test.push(0);
        EXPECT_EQ(test.finish().size(), 1U);
    }
}

#ifdef M_PERTURB
/// While it lives, memory is allocated full of a certain byte, where it is not cleared.
class SoiledMemory {
public:
    explicit SoiledMemory(int byte) { mallopt(M_PERTURB, ~byte & 0xff); }
    ~SoiledMemory() { mallopt(M_PERTURB, 0); }
    SoiledMemory(const SoiledMemory&) = delete;
    SoiledMemory& operator=(const SoiledMemory&) = delete;
};

/// Of a texture that moves, so that there is something to foresee.
av::FramePtr makeTexture(PictureSize size, int number) {
    auto picture =
        test::makePicture(AV_PIX_FMT_YUV420P, size.width, size.height, {0, 128, 128}, number * 40);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const int place = (x + 3 * number) / 5 * 7919 ^ (y + number) / 3 * 104729;
            picture->data[0][y * picture->linesize[0] + x] =
                static_cast<std::uint8_t>(64 + place % 128);
        }
    return picture;
}

std::string encodedTextures(PictureSize size) {
    VideoEncoder encoder(
        encodeSettings(size, {1, 1}, 0, ExportPreset::AVAssetExportPresetHighestQuality),
        atRate(25), "test");
    std::string bytes;
    const auto sink = [&bytes](AVPacket& packet) {
        bytes.append(packet.data, packet.data + packet.size);
    };
    for (int number = 0; number < 16; ++number)
        encoder.push(*makeTexture(size, number), sink);
    encoder.finish(sink);
    return bytes;
}

TEST(VideoEncoder, MakesTheSameWhateverLayInMemoryBefore) {
    // Of the first, each row leaves a rest when it is taken in wide steps.
    for (const PictureSize size : {PictureSize{320, 240}, PictureSize{640, 240}}) {
        const std::string expected = encodedTextures(size);
        for (const int byte : {1, 0x55, 0x80, 0xfe}) {
            const SoiledMemory soiled(byte);
            EXPECT_TRUE(encodedTextures(size) == expected) << size.width << ", " << byte;
        }
    }
}
#endif

} // namespace

} // namespace boxlift::media
