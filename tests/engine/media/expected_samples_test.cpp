#include "engine/media/expected_samples.h"

#include "engine/media/copy_fixture.h"
#include "engine/media/packet_source.h"

namespace boxlift::media {

namespace {

using test::audioOf;
using test::mediaOf;
using test::videoOf;

class ExpectedSamplesTest : public test::SourceTest {
protected:
    PacketSource open() const { return PacketSource(test::selectAll(source()), {}); }
    std::int64_t packetCount(std::size_t stream) const {
        return static_cast<std::int64_t>(
            boxlift::test::probe(source()).streams.at(stream).packets.size());
    }
};

} // namespace

TEST_F(ExpectedSamplesTest, CountsWhatAMoviesIndexTells) {
    auto video = videoOf("libx264");
    video.bFrames = 2;
    MAKE_SOURCE(mediaOf("mp4", {video}, {audioOf("aac")}));
    const PacketSource source = open();
    const ExpectedSamples pictures = copiedSamples(source, 0);
    EXPECT_EQ(pictures.count, packetCount(0));
    EXPECT_EQ(pictures.keys, 3);
    EXPECT_LT(pictures.timeRuns, 4);
    EXPECT_TRUE(pictures.mayBeReordered);
    EXPECT_TRUE(pictures.isCertain);
    const ExpectedSamples sound = copiedSamples(source, 1);
    EXPECT_EQ(sound.count, packetCount(1));
    EXPECT_LT(sound.timeRuns, 4);
    EXPECT_FALSE(sound.mayBeReordered);
    EXPECT_GT(pictures.bytes + sound.bytes, source.fileSize() / 2);
    EXPECT_LT(pictures.bytes + sound.bytes, source.fileSize());
}

TEST_F(ExpectedSamplesTest, CountsStretchesOfUnequalTime) {
    auto video = videoOf("mpeg4");
    video.variableFrameRate = true;
    MAKE_SOURCE(mediaOf("mov", {video}));
    const ExpectedSamples pictures = copiedSamples(open(), 0);
    EXPECT_GE(pictures.timeRuns, pictures.count - 2);
}

TEST_F(ExpectedSamplesTest, GuessesRatherMoreWhereThereIsNoIndex) {
    auto spec = mediaOf("mpegts", {videoOf("libx264")}, {audioOf("aac")});
    spec.seconds = 4;
    MAKE_SOURCE(spec);
    const PacketSource source = open();
    for (const int stream : {0, 1}) {
        const ExpectedSamples samples = copiedSamples(source, stream);
        EXPECT_GE(samples.count, packetCount(static_cast<std::size_t>(stream)));
        EXPECT_LT(samples.count, 2 * packetCount(static_cast<std::size_t>(stream)));
        EXPECT_EQ(samples.timeRuns, samples.count);
        EXPECT_FALSE(samples.isCertain);
    }
}

TEST_F(ExpectedSamplesTest, GuessesWhatEncodingMakes) {
    auto audio = audioOf("pcm_s16le");
    audio.sampleRate = 48000;
    MAKE_SOURCE(mediaOf("mov", {videoOf("mpeg4")}, {audio}));
    const PacketSource source = open();
    EXPECT_EQ(encodedSamples(source, 0).count, packetCount(0));
    EXPECT_NEAR(static_cast<double>(encodedSamples(source, 1).count), 1.2 * 48000 / 1024, 2);
    EXPECT_FALSE(encodedSamples(source, 0).isCertain);
}

} // namespace boxlift::media
