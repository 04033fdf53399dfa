#include "engine/media/decoding_lead.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "engine/media/negative_offsets.h"
#include "engine/media/passthrough_copier.h"
#include "engine/media/source_fixture.h"
#include "model/cancelled.h"
#include "support/media_probe.h"

namespace boxlift::media {

namespace {

using boxlift::test::probe;
using test::mediaOf;
using test::videoOf;

class DecodingLeadTest : public test::SourceTest {
protected:
    std::int64_t lead(int stream = 0) const {
        return decodingLead(InputFile::open(source()), stream, {});
    }
    static boxlift::test::MediaSpec reordered() {
        auto video = videoOf("libx264");
        video.bFrames = 2;
        video.seconds = 0.2;
        return mediaOf("mov", {video});
    }
    void giveNegativeOffsets() const {
        const std::string movie = boxlift::test::readFile(source());
        boxlift::test::writeFile(source(), test::withNegativeOffsets(movie));
    }
};

/// The most that a packet is shown before it is decoded.
std::int64_t largestLateness(const boxlift::test::ProbedStream& stream) {
    std::int64_t largest = 0;
    for (const auto& packet : stream.packets)
        largest = std::max(largest, packet.dts.value() - packet.pts.value());
    return largest;
}

} // namespace

TEST_F(DecodingLeadTest, IsNothingInFilesWrittenWell) {
    MAKE_SOURCE(reordered());
    EXPECT_EQ(largestLateness(probe(source()).video()), 0);
    EXPECT_EQ(lead(), 0);
}

TEST_F(DecodingLeadTest, IsNothingWithoutReordering) {
    MAKE_SOURCE(mediaOf("mov", {videoOf("mpeg4")}));
    EXPECT_EQ(lead(), 0);
}

TEST_F(DecodingLeadTest, IsTheMostThatAPacketIsShownBeforeItIsDecoded) {
    MAKE_SOURCE(reordered());
    giveNegativeOffsets();
    const std::int64_t lateness = largestLateness(probe(source()).video());
    ASSERT_GT(lateness, 0);
    EXPECT_EQ(lead(), lateness);
}

TEST_F(DecodingLeadTest, LooksAtItsStreamAlone) {
    auto spec = reordered();
    spec.video.push_back(videoOf("mpeg4"));
    MAKE_SOURCE(spec);
    giveNegativeOffsets();
    ASSERT_GT(largestLateness(probe(source()).video(0)), 0);
    EXPECT_GT(lead(0), 0);
    EXPECT_EQ(lead(1), 0);
}

TEST_F(DecodingLeadTest, StopsWhenAsked) {
    MAKE_SOURCE(mediaOf("mov", {videoOf("mpeg4")}));
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW(decodingLead(InputFile::open(source()), 0, stop.get_token()), Cancelled);
}

} // namespace boxlift::media
