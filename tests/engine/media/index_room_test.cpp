#include "engine/media/index_room.h"

#include "engine/media/copy_fixture.h"
#include "engine/media/muxer.h"
#include "engine/media/packet_source.h"
#include "engine/media/stream_copy.h"
#include "support/media_boxes.h"

namespace boxlift::media {

namespace {

using test::audioOf;
using test::mediaOf;
using test::videoOf;

class IndexRoomTest : public test::CopyTest {
protected:
    /// The most that the index of a copy of the source can have, and what it has.
    std::pair<std::int64_t, std::int64_t> expectedAndReal() const {
        const PacketSource packets(test::selectAll(source()), {});
        std::vector<ExpectedSamples> tracks;
        for (unsigned int i = 0; i < packets.context().nb_streams; ++i)
            tracks.push_back(copiedSamples(packets, static_cast<int>(i)));
        copied(FileType::AVFileTypeMPEG4);
        const auto boxes = boxlift::test::topLevelBoxes(output());
        EXPECT_EQ(boxes.back().type, "moov");
        return {largestIndex(packets.context(), tracks),
                static_cast<std::int64_t>(boxes.back().size)};
    }
};

} // namespace

TEST_F(IndexRoomTest, SufficesForPicturesOutOfOrderAndSound) {
    auto video = videoOf("libx264");
    video.bFrames = 3;
    auto spec = mediaOf("mov", {video}, {audioOf("aac")});
    spec.seconds = 60;
    MAKE_SOURCE(spec);
    const auto [expected, real] = expectedAndReal();
    EXPECT_GE(expected, real);
    EXPECT_LT(expected, 3 * real);
}

TEST_F(IndexRoomTest, SufficesForUnequalTimesLabelsAndChapters) {
    auto video = videoOf("mpeg4");
    video.variableFrameRate = true;
    video.keyFrameInterval = 1;
    auto spec = mediaOf("mov", {video, video}, {audioOf("aac"), audioOf("aac")});
    spec.seconds = 20;
    spec.metadata = {{"title", std::string(5000, 't')}, {"comment", std::string(20'000, 'c')}};
    for (int i = 0; i < 200; ++i)
        spec.chapters.push_back({std::string(100, 'n'), 0.1 * i, 0.1 * (i + 1)});
    MAKE_SOURCE(spec);
    const auto [expected, real] = expectedAndReal();
    EXPECT_GE(expected, real);
}

TEST_F(IndexRoomTest, TakesLongPlacesBeyondFourGibibytes) {
    const AVFormatContext none{};
    ExpectedSamples track{.count = 1000, .timeRuns = 1, .bytes = 1 << 30};
    const ExpectedSamples other{.count = 1000, .timeRuns = 1};
    const std::int64_t small = largestIndex(none, std::array{track, other});
    track.bytes = std::int64_t{1} << 33;
    EXPECT_EQ(largestIndex(none, std::array{track, other}), small + 4 * 2000);
}

TEST_F(IndexRoomTest, ExpectsFewChunksOfALoneTrack) {
    const AVFormatContext none{};
    const ExpectedSamples track{.count = 100'000, .timeRuns = 1, .bytes = 50 << 20};
    EXPECT_LT(largestIndex(none, std::array{track}), 4 * 100'000 + 16'000);
}

} // namespace boxlift::media
