#include "support/media_probe.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "support/media_generator.h"
#include "support/temp_folder.h"

namespace boxlift::test {
namespace {

using ::testing::Each;
using ::testing::Field;
using ::testing::SizeIs;

class MediaProbe : public ::testing::Test {
protected:
    ProbedFile probed(const MediaSpec& spec) {
        const std::filesystem::path path = m_folder.path() / "clip";
        makeMedia(path, spec);
        return probe(path);
    }

    TempFolder m_folder;
};

MediaSpec pictureAndSound(const std::string& format) {
    return {.format = format, .video = {{}}, .audio = {{}}};
}

TEST_F(MediaProbe, SeesTheSamePayloadWhateverTheFraming) {
    const ProbedFile lengths = probed(pictureAndSound("mov"));
    const ProbedFile startCodes = probed(pictureAndSound("mpegts"));
    ASSERT_THAT(lengths.video().packets, SizeIs(25));
    EXPECT_EQ(lengths.video().payloadHashes(), startCodes.video().payloadHashes());
    EXPECT_EQ(lengths.audio().payloadHashes(), startCodes.audio().payloadHashes());
    EXPECT_NE(lengths.video().packets[0].size, startCodes.video().packets[0].size);
}

TEST_F(MediaProbe, SeesTheSameHevcPayloadWhateverTheFraming) {
    // Without the note about itself that the encoder puts into streams, but not into MOV files.
    const Options silent = {{"x265-params", "info=0"}};
    MediaSpec spec = {.video = {{.codec = "libx265", .encoderOptions = silent}}};
    try {
        const ProbedFile lengths = probed(spec);
        spec.format = "mpegts";
        EXPECT_EQ(lengths.video().payloadHashes(), probed(spec).video().payloadHashes());
    } catch (const MissingEncoder& error) {
        GTEST_SKIP() << error.what();
    }
}

TEST_F(MediaProbe, SeesTheSamePcmWhateverThePackets) {
    MediaSpec spec = {.audio = {{.codec = "pcm_s16be", .layout = "mono"}}};
    const ProbedFile inMov = probed(spec);
    spec.format = "aiff";
    const ProbedFile inAiff = probed(spec);
    EXPECT_NE(inMov.audio().packets.size(), inAiff.audio().packets.size());
    EXPECT_EQ(inMov.audio().payloadHash, inAiff.audio().payloadHash);
}

TEST_F(MediaProbe, SeesADifferentPayload) {
    const ProbedFile file = probed({.video = {{}, {.encoderOptions = {{"crf", "40"}}}}});
    EXPECT_NE(file.video(0).payloadHash, file.video(1).payloadHash);
    EXPECT_NE(file.video(0).packets[3].payloadHash, file.video(1).packets[3].payloadHash);
}

TEST_F(MediaProbe, ReadsPacketTimes) {
    const ProbedFile file = probed({.video = {{.frameRate = {30000, 1001}}}, .audio = {{}}});
    const ProbedStream& video = file.video();
    EXPECT_EQ(video.averageFrameRate, (Ratio{30000, 1001}));
    EXPECT_NEAR(video.seconds(video.packets[1].pts.value()), 1001.0 / 30000, 1e-9);
    EXPECT_NEAR(video.seconds(video.packets[1].duration), 1001.0 / 30000, 1e-9);
    EXPECT_EQ(file.audio().timeBase, (Ratio{1, 44100}));
    EXPECT_EQ(file.audio().packets[3].duration, 1024);
    EXPECT_THAT(file.audio().packets, Each(Field(&ProbedPacket::isKey, true)));
}

TEST_F(MediaProbe, SaysWhatIsDiscarded) {
    const ProbedFile file = probed({.audio = {{}}});
    EXPECT_TRUE(file.audio().packets[0].isDiscarded);
    EXPECT_FALSE(file.audio().packets[1].isDiscarded);
    EXPECT_EQ(file.audio().packets[0].pts, -1024);
}

TEST_F(MediaProbe, ReportsTheStartOfATransportStream) {
    const ProbedFile file = probed(pictureAndSound("mpegts"));
    EXPECT_GT(file.startSeconds.value(), 1);
    EXPECT_GT(file.video().startSeconds.value(), 1);
}

TEST_F(MediaProbe, TellsHeaderDataFromNone) {
    EXPECT_TRUE(probed({.audio = {{}}}).audio().hasHeaderData);
    EXPECT_FALSE(probed({.audio = {{.codec = "pcm_s16le"}}}).audio().hasHeaderData);
}

TEST_F(MediaProbe, RefusesToPickAStreamThatIsNotThere) {
    const ProbedFile file = probed({.audio = {{}}});
    EXPECT_THROW(file.video(), std::out_of_range);
    EXPECT_THROW(file.audio(1), std::out_of_range);
}

TEST_F(MediaProbe, FailsOnAFileThatIsNotMedia) {
    EXPECT_THROW(probe(writeFile(m_folder.path() / "text", "not media at all")),
                 std::runtime_error);
    EXPECT_THROW(probe(m_folder.path() / "missing"), std::runtime_error);
}

} // namespace
} // namespace boxlift::test
