#include "engine/media/file_composition.h"

#include <gtest/gtest.h>

#include "engine/media/error.h"
#include "support/temp_folder.h"

namespace boxlift::media {

namespace {

constexpr TimeRange place{Time::fromTicks(100), Time::fromTicks(5000)};

class FileCompositionTest : public testing::Test {
protected:
    std::shared_ptr<const FileTrack> source(MediaType type = MediaType::video,
                                            TimeRange range = place) const {
        FileTrack::Facts facts;
        facts.streamIndex = 3;
        facts.mediaType = type;
        facts.format = FormatDescription{fourCharCode("avc1")};
        facts.naturalSize = {160, 120};
        facts.timeRange = range;
        facts.preferredTransform = {0, 1, -1, 0, 120, 0};
        return std::make_shared<FileTrack>(m_file, facts);
    }

    boxlift::test::TempFolder m_folder;
    std::shared_ptr<const InputFile> m_file =
        InputFile::open(boxlift::test::writeFile(m_folder.path() / "file"));
    FileComposition m_composition;
};

} // namespace

TEST_F(FileCompositionTest, StartsWithNothing) {
    EXPECT_TRUE(m_composition.tracks().empty());
    EXPECT_EQ(m_composition.duration(), Time::zero());
    EXPECT_EQ(m_composition.file(), nullptr);
    EXPECT_TRUE(m_composition.isReadable());
}

TEST_F(FileCompositionTest, TakesVideoAndAudioTracksOnly) {
    const auto none = MutableComposition::persistentTrackIdInvalid;
    EXPECT_NE(m_composition.addMutableTrack(MediaType::video, none), nullptr);
    EXPECT_NE(m_composition.addMutableTrack(MediaType::audio, none), nullptr);
    for (const MediaType type : {MediaType::text, MediaType::timecode, MediaType::other})
        EXPECT_EQ(m_composition.addMutableTrack(type, none), nullptr);
    EXPECT_EQ(m_composition.tracks().size(), 2U);
    EXPECT_EQ(m_composition.loadTracks(MediaType::audio).size(), 1U);
}

TEST_F(FileCompositionTest, ShowsAWholeTrackAtItsOwnPlace) {
    const auto track = m_composition.addMutableTrack(MediaType::video, 0);
    EXPECT_TRUE(track->formatDescriptions().empty());
    EXPECT_EQ(track->naturalSize(), Size());
    track->insertTimeRange(place, source(), place.start);
    EXPECT_EQ(track->timeRange(), place);
    EXPECT_EQ(track->naturalSize(), (Size{160, 120}));
    ASSERT_EQ(track->formatDescriptions().size(), 1U);
    EXPECT_EQ(track->formatDescriptions()[0].mediaSubType, fourCharCode("avc1"));
    EXPECT_EQ(m_composition.duration(), place.end());
    EXPECT_EQ(m_composition.file(), m_file);
}

TEST_F(FileCompositionTest, StartsUprightUntilItIsTurned) {
    const auto track = m_composition.addMutableTrack(MediaType::video, 0);
    track->insertTimeRange(place, source(), place.start);
    EXPECT_EQ(track->preferredTransform(), AffineTransform());
    track->setPreferredTransform({0, 1, -1, 0, 120, 0});
    EXPECT_EQ(track->preferredTransform(), (AffineTransform{0, 1, -1, 0, 120, 0}));
}

TEST_F(FileCompositionTest, RefusesAnythingButAWholeTrackAtItsOwnPlace) {
    const auto track = m_composition.addMutableTrack(MediaType::video, 0);
    const TimeRange part{place.start, Time::fromTicks(4999)};
    EXPECT_THROW(track->insertTimeRange(part, source(), part.start), Error);
    EXPECT_THROW(track->insertTimeRange(place, source(), Time::zero()), Error);
    EXPECT_THROW(track->insertTimeRange(place, nullptr, place.start), Error);
    EXPECT_THROW(track->insertTimeRange(place, source(MediaType::audio), place.start), Error);
    EXPECT_EQ(track->timeRange(), (TimeRange{Time::zero(), Time::zero()}));
    EXPECT_EQ(m_composition.file(), nullptr);
}

TEST_F(FileCompositionTest, RefusesASecondRange) {
    const auto track = m_composition.addMutableTrack(MediaType::video, 0);
    track->insertTimeRange(place, source(), place.start);
    EXPECT_THROW(track->insertTimeRange(place, source(), place.start), Error);
    EXPECT_EQ(track->timeRange(), place);
}

TEST_F(FileCompositionTest, LastsUntilItsLastTrackEnds) {
    const TimeRange later{Time::fromTicks(9000), Time::fromTicks(10)};
    m_composition.addMutableTrack(MediaType::audio, 0)
        ->insertTimeRange(later, source(MediaType::audio, later), later.start);
    m_composition.addMutableTrack(MediaType::video, 0)
        ->insertTimeRange(place, source(), place.start);
    m_composition.addMutableTrack(MediaType::video, 0);
    EXPECT_EQ(m_composition.duration(), Time::fromTicks(9010));
}

} // namespace boxlift::media
