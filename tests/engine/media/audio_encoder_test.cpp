#include "engine/media/audio_encoder.h"

#include <gtest/gtest.h>
#include <vector>

#include "engine/media/audio_frames.h"
#include "engine/media/error.h"

namespace boxlift::media {

namespace {

using test::makeFrame;
using test::tone;

struct Packet {
    std::int64_t pts = 0;
    std::int64_t duration = 0;
    int size = 0;
};

class Encoding {
public:
    explicit Encoding(const AudioEncoder::Settings& settings) : encoder(settings, "test") {}

    void push(std::int64_t position, int count) {
        AudioRun run{position, count, makeFrame({"stereo"}, count, tone(440, 0.5, 44100))};
        encoder.push(run, sink());
    }
    void pushSilence(std::int64_t position, std::int64_t count) {
        encoder.push({position, count, nullptr}, sink());
    }
    void finish() { encoder.finish(sink()); }
    std::int64_t duration() const {
        std::int64_t sum = 0;
        for (const Packet& packet : packets)
            sum += packet.duration;
        return sum;
    }

    AudioEncoder encoder;
    std::vector<Packet> packets;

private:
    AudioEncoder::Sink sink() {
        return [this](AVPacket& packet) {
            packets.push_back({packet.pts, packet.duration, packet.size});
        };
    }
};

constexpr AudioEncoder::Settings stereo128{44100, AV_CH_LAYOUT_STEREO, 128'000};

TEST(AudioEncoder, MakesPacketsThatAddUpToTheSamplesAndThePriming) {
    Encoding encoding(stereo128);
    const std::int64_t priming = 1024;
    encoding.push(0, 700);
    encoding.push(700, 5000);
    encoding.finish();
    ASSERT_FALSE(encoding.packets.empty());
    EXPECT_EQ(encoding.packets.front().pts, -priming);
    EXPECT_EQ(encoding.duration(), 5700 + priming);
    for (std::size_t i = 1; i < encoding.packets.size(); ++i)
        EXPECT_EQ(encoding.packets[i].pts,
                  encoding.packets[i - 1].pts + encoding.packets[i - 1].duration);
}

TEST(AudioEncoder, StampsALateRunByItsPosition) {
    Encoding encoding(stereo128);
    encoding.push(44100, 2048);
    encoding.finish();
    EXPECT_EQ(encoding.packets.front().pts, 44100 - 1024);
}

TEST(AudioEncoder, EncodesSilenceThatCostsNearlyNothing) {
    Encoding encoding(stereo128);
    encoding.push(0, 1000);
    encoding.pushSilence(1000, 441'000);
    encoding.finish();
    EXPECT_EQ(encoding.duration(), 442'000 + 1024);
    EXPECT_LT(encoding.packets[200].size, 32);
}

TEST(AudioEncoder, DescribesAacWithItsConfiguration) {
    const Encoding encoding(stereo128);
    AVFormatContext* context = avformat_alloc_context();
    ASSERT_NE(context, nullptr);
    const av::OutputContextPtr owner(context);
    AVStream* stream = avformat_new_stream(context, nullptr);
    ASSERT_NE(stream, nullptr);
    encoding.encoder.describe(*stream);
    EXPECT_EQ(stream->codecpar->codec_id, AV_CODEC_ID_AAC);
    EXPECT_EQ(stream->codecpar->sample_rate, 44100);
    EXPECT_EQ(stream->codecpar->initial_padding, 1024);
    EXPECT_GE(stream->codecpar->extradata_size, 2);
    EXPECT_EQ(stream->time_base.den, 44100);
}

TEST(AudioEncoder, BringsTheBitRateDownToWhatAacAllows) {
    EXPECT_EQ(AudioEncoder::highestBitRate(8000, 1), 48'000);
    EXPECT_EQ(AudioEncoder::highestBitRate(48000, 2), 576'000);
    EXPECT_NO_THROW(Encoding({8000, AV_CH_LAYOUT_MONO, 128'000}));
}

TEST(AudioEncoder, HasTheSampleRatesOfAac) {
    for (const int rate : {8000, 11025, 22050, 32000, 44100, 48000, 96000})
        EXPECT_TRUE(AudioEncoder::hasSampleRate(rate)) << rate;
    for (const int rate : {0, 6000, 37800, 192000})
        EXPECT_FALSE(AudioEncoder::hasSampleRate(rate)) << rate;
}

TEST(AudioEncoder, RefusesASampleRateThatAacHasNot) {
    EXPECT_THROW(Encoding({37800, AV_CH_LAYOUT_STEREO, 128'000}), Error);
}

} // namespace

} // namespace boxlift::media
