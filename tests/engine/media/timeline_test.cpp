#include "engine/media/timeline.h"

#include <gtest/gtest.h>

#include <array>

#include "engine/media/box_writer.h"
#include "engine/media/source_fixture.h"
#include "model/cancelled.h"
#include "support/media_boxes.h"

namespace boxlift::media {

namespace {

using boxlift::test::readFile;
using boxlift::test::writeFile;
using test::audioOf;
using test::mediaOf;
using test::u32;
using test::videoOf;

/// A file with its timeline.
class Opened {
public:
    explicit Opened(const std::filesystem::path& path,
                    av::ProbeDepth depth = av::ProbeDepth::header)
        : m_demuxer(av::Demuxer::open(InputFile::open(path), depth, {})),
          m_timeline(Timeline::of(*m_demuxer, {})) {}

    const Timeline* operator->() const { return &m_timeline; }
    TimeRange range(int stream) const {
        return m_timeline.range(*m_demuxer->context().streams[stream]);
    }
    bool isSpliced(int stream) const {
        return m_timeline.isSpliced(*m_demuxer->context().streams[stream]);
    }

private:
    std::unique_ptr<av::Demuxer> m_demuxer;
    Timeline m_timeline;
};

class TimelineTest : public test::SourceTest {
protected:
    /// Gives the first track these edits, each of a length in milliseconds and a start in the
    /// media's time scale.
    void setEdits(std::initializer_list<std::pair<std::uint32_t, std::uint32_t>> edits) const {
        constexpr std::array<std::string_view, 4> path{"moov", "trak", "edts", "elst"};
        const auto bytes = test::editBox(readFile(source()), path, [&](std::string_view) {
            std::string contents = u32(0) + u32(edits.size());
            for (const auto& [length, start] : edits)
                contents += u32(length) + u32(start) + u32(0x10000);
            return contents;
        });
        writeFile(source(), bytes);
    }
};

constexpr double millisecond = 0.0011;

} // namespace

TEST_F(TimelineTest, LetsALateTrackStartLate) {
    auto audio = audioOf("pcm_s16le");
    audio.startSeconds = 0.5;
    MAKE_SOURCE(mediaOf("mov", {videoOf("mpeg4")}, {audio}));
    const Opened file(source());
    EXPECT_EQ(file.range(0).start, Time::zero());
    EXPECT_NEAR(file.range(0).duration.seconds(), 1, millisecond);
    EXPECT_NEAR(file.range(1).start.seconds(), 0.5, millisecond);
    EXPECT_NEAR(file.range(1).duration.seconds(), 1, millisecond);
    EXPECT_NEAR(file->duration().seconds(), 1.5, millisecond);
    EXPECT_TRUE(file->isDeclared());
}

TEST_F(TimelineTest, TakesTheEncodersPrimingAway) {
    MAKE_SOURCE(mediaOf("mp4", {}, {audioOf("aac")}));
    const Opened file(source());
    EXPECT_EQ(file.range(0).start, Time::zero());
    EXPECT_NEAR(file.range(0).duration.seconds(), 1, millisecond);
}

TEST_F(TimelineTest, IsNotShortenedByReorderedPictures) {
    auto video = videoOf("libx264");
    video.bFrames = 2;
    MAKE_SOURCE(mediaOf("mp4", {video}));
    EXPECT_NEAR(Opened(source()).range(0).duration.seconds(), 1, millisecond);
}

TEST_F(TimelineTest, AppliesAnEdit) {
    MAKE_SOURCE(mediaOf("mov", {videoOf("mpeg4")}));
    setEdits({{250, 0xffffffff}, {500, 0}});
    const Opened file(source());
    EXPECT_EQ(file.range(0).start, Time::fromSeconds(0.25));
    EXPECT_EQ(file.range(0).duration, Time::fromSeconds(0.5));
    EXPECT_FALSE(file.isSpliced(0));
}

TEST_F(TimelineTest, ShowsNoMoreThanThereIs) {
    MAKE_SOURCE(mediaOf("mov", {videoOf("mpeg4")}));
    setEdits({{5000, 0}});
    EXPECT_NEAR(Opened(source()).range(0).duration.seconds(), 1, millisecond);
}

TEST_F(TimelineTest, AddsUpSplices) {
    MAKE_SOURCE(mediaOf("mov", {videoOf("mpeg4")}));
    setEdits({{800, 0}, {600, 0}});
    const Opened file(source());
    EXPECT_TRUE(file.isSpliced(0));
    EXPECT_EQ(file.range(0).duration, Time::fromSeconds(1.4));
    EXPECT_EQ(file->duration(), Time::fromSeconds(1.4));
}

TEST_F(TimelineTest, AddsUpTheFragmentsOfAFragmentedMovie) {
    auto spec = mediaOf("mp4", {videoOf("mpeg4")}, {audioOf("aac")});
    spec.seconds = 2;
    spec.muxerOptions = {{"movflags", "frag_keyframe+empty_moov+default_base_moof"}};
    MAKE_SOURCE(spec);
    const auto types = boxlift::test::topLevelBoxTypes(source());
    ASSERT_GT(std::count(types.begin(), types.end(), "moof"), 1);
    const Opened file(source());
    EXPECT_NEAR(file.range(0).duration.seconds(), 2, 0.05);
    EXPECT_NEAR(file.range(1).duration.seconds(), 2, 0.05);
    EXPECT_NEAR(file->duration().seconds(), 2, 0.05);
}

TEST_F(TimelineTest, CountsTheFragmentsBeforeADamagedOne) {
    auto spec = mediaOf("mp4", {videoOf("mpeg4")});
    spec.seconds = 2;
    spec.muxerOptions = {{"movflags", "frag_keyframe+empty_moov+default_base_moof"}};
    MAKE_SOURCE(spec);
    const auto boxes = boxlift::test::topLevelBoxes(source());
    const auto last = std::find_if(boxes.rbegin(), boxes.rend(),
                                   [](const auto& box) { return box.type == "moof"; });
    ASSERT_NE(last, boxes.rend());
    std::filesystem::resize_file(source(), last->offset + 20);
    const Opened file(source());
    EXPECT_GT(file->duration().seconds(), 0.4);
    EXPECT_LT(file->duration().seconds(), 2);
}

TEST_F(TimelineTest, BeginsWhereATransportStreamBegins) {
    MAKE_SOURCE(mediaOf("mpegts", {videoOf("mpeg2video")}, {audioOf("mp2")}));
    const Opened file(source());
    EXPECT_NEAR(file.range(0).start.seconds(), 0, 0.06);
    EXPECT_NEAR(file.range(1).start.seconds(), 0, 0.06);
    EXPECT_NEAR(file->duration().seconds(), 1, 0.1);
    EXPECT_FALSE(file->isDeclared());
}

TEST_F(TimelineTest, KnowsGuessesFromDeclarations) {
    MAKE_SOURCE(mediaOf("adts", {}, {audioOf("aac")}));
    EXPECT_FALSE(Opened(source(), av::ProbeDepth::streams)->isDeclared());
    MAKE_SOURCE(mediaOf("wav", {}, {audioOf("pcm_s16le")}));
    const Opened wave(source(), av::ProbeDepth::streams);
    EXPECT_TRUE(wave->isDeclared());
    EXPECT_EQ(wave->duration(), Time::fromSeconds(1));
}

TEST_F(TimelineTest, IsAsLongAsSoundAndPictureAre) {
    auto spec = mediaOf("mp4", {}, {audioOf("aac")});
    spec.subtitles = {{.events = {{0, 5, "later"}}}};
    spec.cover.emplace();
    MAKE_SOURCE(spec);
    EXPECT_NEAR(Opened(source())->duration().seconds(), 1, millisecond);
}

TEST_F(TimelineTest, StopsWhenAsked) {
    MAKE_SOURCE(mediaOf("mp4", {}, {audioOf("aac")}));
    const auto demuxer = av::Demuxer::open(InputFile::open(source()), av::ProbeDepth::header, {});
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW(Timeline::of(*demuxer, stop.get_token()), Cancelled);
}

} // namespace boxlift::media
