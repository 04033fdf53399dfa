#include "engine/media/passthrough_session.h"

#include <gtest/gtest.h>

#include "engine/media/copy_fixture.h"
#include "support/media_probe.h"

namespace boxlift::media {

namespace {

using boxlift::test::probe;
using boxlift::test::ProbedFile;
using boxlift::test::ProbedStream;
using test::audioOf;
using test::mediaOf;
using test::videoOf;

constexpr auto mp4 = FileType::AVFileTypeMPEG4;
constexpr auto mov = FileType::AVFileTypeQuickTimeMovie;
constexpr auto m4a = FileType::AVFileTypeAppleM4A;

/// What belongs to the file as a whole.
class PassthroughMetadataTest : public test::CopyTest {};

const ProbedStream* coverOf(const ProbedFile& file) {
    for (const ProbedStream& stream : file.streams)
        if (stream.isAttachedPicture)
            return &stream;
    return nullptr;
}

std::string valueOf(const ProbedFile& file, const std::string& key) {
    const auto found = file.metadata.find(key);
    return found == file.metadata.end() ? "none" : found->second;
}

} // namespace

TEST_F(PassthroughMetadataTest, KeepsTitlesPeopleAndDates) {
    auto spec = mediaOf("mp4", {videoOf("mpeg4")}, {audioOf("aac")});
    spec.metadata = {{"title", "A Title"},
                     {"artist", "Somebody"},
                     {"comment", "words"},
                     {"creation_time", "2021-02-03T04:05:06.000000Z"}};
    MAKE_SOURCE(spec);
    ASSERT_EQ(valueOf(probe(source()), "creation_time"), "2021-02-03T04:05:06.000000Z");
    for (const FileType type : {mp4, mov, m4a}) {
        const ProbedFile copy = copied(type);
        EXPECT_EQ(valueOf(copy, "title"), "A Title");
        EXPECT_EQ(valueOf(copy, "artist"), "Somebody");
        EXPECT_EQ(valueOf(copy, "comment"), "words");
        EXPECT_EQ(valueOf(copy, "creation_time"), "2021-02-03T04:05:06.000000Z");
    }
}

TEST_F(PassthroughMetadataTest, KeepsPlaceAndCameraOfQuickTime) {
    auto spec = mediaOf("mov", {videoOf("mpeg4")});
    spec.metadata = {{"com.apple.quicktime.make", "Maker"},
                     {"com.apple.quicktime.model", "Model"},
                     {"com.apple.quicktime.location.ISO6709", "+47.3769+008.5417/"}};
    spec.muxerOptions = {{"movflags", "use_metadata_tags"}};
    MAKE_SOURCE(spec);
    ASSERT_EQ(valueOf(probe(source()), "com.apple.quicktime.make"), "Maker");
    const ProbedFile copy = copied(mov);
    EXPECT_EQ(valueOf(copy, "make"), "Maker");
    EXPECT_EQ(valueOf(copy, "model"), "Model");
    EXPECT_EQ(valueOf(copy, "location"), "+47.3769+008.5417/");
    EXPECT_EQ(valueOf(copied(mp4), "location"), "+47.3769+008.5417/");
}

TEST_F(PassthroughMetadataTest, KeepsQuickTimesKeysToTheLetter) {
    const std::map<std::string, std::string> keys{
        {"com.apple.quicktime.make", "Maker"},
        {"com.apple.quicktime.model", "Model"},
        {"com.apple.quicktime.software", "Version 1"},
        {"com.apple.quicktime.creationdate", "2021-02-03T04:05:06+0100"},
        {"com.apple.quicktime.location.ISO6709", "+47.3769+008.5417/"}};
    auto spec = mediaOf("mov", {videoOf("mpeg4")}, {audioOf("aac")});
    spec.metadata = keys;
    spec.muxerOptions = {{"movflags", "use_metadata_tags"}};
    MAKE_SOURCE(spec);
    for (const FileType type : {mp4, mov, m4a}) {
        const ProbedFile copy = copied(type);
        for (const auto& [key, value] : keys)
            EXPECT_EQ(valueOf(copy, key), value) << key;
    }
}

// Numbers are left out, and "Nan" and "1E5" are some to the standard library.
TEST_F(PassthroughMetadataTest, KeepsWordsThatCouldBeNumbers) {
    auto spec = mediaOf("mov", {videoOf("mpeg4")});
    spec.metadata = {{"com.apple.quicktime.artist", "Nan"}, {"com.apple.quicktime.model", "1E5"}};
    spec.muxerOptions = {{"movflags", "use_metadata_tags"}};
    MAKE_SOURCE(spec);
    for (const FileType type : {mp4, mov})
        for (const auto& [key, value] : spec.metadata)
            EXPECT_EQ(valueOf(copied(type), key), value) << key;
}

TEST_F(PassthroughMetadataTest, NamesTheCameraInEveryType) {
    auto spec = mediaOf("mov", {videoOf("mpeg4")}, {audioOf("aac")});
    spec.metadata = {{"make", "Maker"}, {"model", "Model"}};
    MAKE_SOURCE(spec);
    ASSERT_EQ(valueOf(probe(source()), "make"), "Maker");
    EXPECT_EQ(valueOf(copied(mov), "model"), "Model");
    for (const FileType type : {mp4, m4a}) {
        const ProbedFile copy = copied(type);
        EXPECT_EQ(valueOf(copy, "com.apple.quicktime.make"), "Maker");
        EXPECT_EQ(valueOf(copy, "com.apple.quicktime.model"), "Model");
    }
}

// The other form of a place has steps of 1/65,536 of a degree.
TEST_F(PassthroughMetadataTest, KeepsAPlaceToTheLetter) {
    auto spec = mediaOf("mov", {videoOf("mpeg4")}, {audioOf("aac")});
    spec.metadata = {{"location", "+47.3769+008.5417+408.100/"}};
    MAKE_SOURCE(spec);
    ASSERT_EQ(valueOf(probe(source()), "location"), "+47.3769+008.5417+408.100/");
    EXPECT_EQ(valueOf(copied(mov), "location"), "+47.3769+008.5417+408.100/");
    for (const FileType type : {mp4, m4a})
        EXPECT_EQ(valueOf(copied(type), "com.apple.quicktime.location.ISO6709"),
                  "+47.3769+008.5417+408.100/");
}

TEST_F(PassthroughMetadataTest, KeepsTheCameraThroughSeveralCopies) {
    auto spec = mediaOf("mov", {videoOf("mpeg4")});
    spec.metadata = {{"make", "Maker"}, {"model", "Model"}};
    MAKE_SOURCE(spec);
    copied(mp4);
    std::filesystem::rename(output(), source());
    const ProbedFile copy = copied(mov);
    EXPECT_EQ(valueOf(copy, "make"), "Maker");
    EXPECT_EQ(valueOf(copy, "com.apple.quicktime.model"), "Model");
}

TEST_F(PassthroughMetadataTest, KeepsWhatMusicPlayersShow) {
    const std::map<std::string, std::string> tags{
        {"title", "A Title"},     {"artist", "Somebody"}, {"album_artist", "Some Band"},
        {"composer", "A Writer"}, {"album", "An Album"},  {"genre", "Noise"},
        {"date", "2021"},         {"comment", "words"},   {"copyright", "nobody"},
        {"track", "3/12"},        {"disc", "1/2"},        {"grouping", "A Group"},
        {"lyrics", "la la"}};
    auto spec = mediaOf("ipod", {}, {audioOf("aac")});
    spec.metadata = tags;
    MAKE_SOURCE(spec);
    for (const FileType type : {mp4, mov, m4a}) {
        const ProbedFile copy = copied(type);
        for (const auto& [key, value] : tags)
            EXPECT_EQ(valueOf(copy, key), value) << key;
    }
}

// Tags that the library reads from some containers and writes into none of these.
TEST_F(PassthroughMetadataTest, KeepsTagsOfAnyName) {
    const std::map<std::string, std::string> tags{{"MusicBrainz Album Id", "ab12-cd34"},
                                                  {"ISRC", "XX1234567890"},
                                                  {"replaygain_track_gain", "-3.1 dB"},
                                                  {"publisher", "A House"}};
    auto spec = mediaOf("mp3", {}, {audioOf("libmp3lame")});
    spec.metadata = tags;
    MAKE_SOURCE(spec);
    for (const auto& [key, value] : tags)
        ASSERT_EQ(valueOf(probe(source()), key), value);
    for (const FileType type : {mp4, mov}) {
        const ProbedFile copy = copied(type);
        for (const auto& [key, value] : tags)
            EXPECT_EQ(valueOf(copy, key), value) << key;
    }
}

TEST_F(PassthroughMetadataTest, KeepsThemThroughSeveralCopies) {
    auto spec = mediaOf("mp3", {}, {audioOf("libmp3lame")});
    spec.metadata = {{"ISRC", "XX1234567890"}, {"compilation", "1"}, {"sort_artist", "Body, Some"}};
    spec.metadata["season_number"] = "7";
    MAKE_SOURCE(spec);
    for (const FileType type : {mov, mp4, mov, mp4}) {
        const ProbedFile copy = copied(type);
        EXPECT_EQ(valueOf(copy, "ISRC"), "XX1234567890");
        EXPECT_EQ(valueOf(copy, "compilation"), "1");
        EXPECT_EQ(valueOf(copy, "sort_artist"), "Body, Some");
        EXPECT_EQ(valueOf(copy, "season_number"), "7");
        std::filesystem::rename(output(), source());
    }
}

TEST_F(PassthroughMetadataTest, IsTheNewContainersOwn) {
    MAKE_SOURCE(mediaOf("mov", {videoOf("mpeg4")}, {audioOf("aac")}));
    ASSERT_EQ(valueOf(probe(source()), "major_brand"), "qt  ");
    EXPECT_EQ(valueOf(copied(mp4), "major_brand"), "isom");
    EXPECT_EQ(valueOf(copied(m4a), "major_brand"), "M4A ");
}

TEST_F(PassthroughMetadataTest, KeepsChapters) {
    auto spec = mediaOf("mov", {videoOf("mpeg4")}, {audioOf("aac")});
    spec.chapters = {{"one", 0, 0.4}, {"two", 0.4, 1}};
    MAKE_SOURCE(spec);
    for (const FileType type : {mp4, mov, m4a}) {
        const ProbedFile copy = copied(type);
        ASSERT_EQ(copy.chapters.size(), 2U);
        EXPECT_EQ(copy.chapters[0].title, "one");
        EXPECT_EQ(copy.chapters[1].title, "two");
        EXPECT_NEAR(copy.chapters[1].start, 0.4, 0.002);
        EXPECT_NEAR(copy.chapters[1].end, 1, 0.02);
        EXPECT_NEAR(copy.durationSeconds.value(), 1, 0.03);
    }
}

TEST_F(PassthroughMetadataTest, IsNotMadeLongerByChaptersBehindTheEnd) {
    auto spec = mediaOf("mp3", {}, {audioOf("libmp3lame")});
    spec.chapters = {{"one", 0, 0.5}, {"two", 0.5, 60}, {"three", 60, 90}};
    MAKE_SOURCE(spec);
    ASSERT_EQ(probe(source()).chapters.size(), 3U);
    const ProbedFile copy = copied(mp4);
    EXPECT_EQ(copy.chapters.size(), 2U);
    EXPECT_NEAR(copy.durationSeconds.value(), 1, 0.1);
}

TEST_F(PassthroughMetadataTest, KeepsTheCover) {
    for (const char* codec : {"png", "mjpeg"}) {
        auto spec = mediaOf("mp4", {}, {audioOf("aac")});
        spec.cover = {.codec = codec};
        MAKE_SOURCE(spec);
        const ProbedFile before = probe(source());
        ASSERT_NE(coverOf(before), nullptr);
        for (const FileType type : {mp4, mov, m4a}) {
            const ProbedFile copy = copied(type);
            ASSERT_NE(coverOf(copy), nullptr);
            EXPECT_EQ(coverOf(copy)->codec, coverOf(before)->codec);
            EXPECT_EQ(coverOf(copy)->payloadHashes(), coverOf(before)->payloadHashes());
            EXPECT_EQ(copy.audio().payloadHashes(), before.audio().payloadHashes());
        }
    }
}

TEST_F(PassthroughMetadataTest, TakesTheCoverOfAnMp3Along) {
    auto spec = mediaOf("mp3", {}, {audioOf("libmp3lame")});
    spec.cover.emplace();
    spec.metadata = {{"title", "A Title"}};
    MAKE_SOURCE(spec);
    ASSERT_NE(coverOf(probe(source())), nullptr);
    const ProbedFile copy = copied(mp4);
    ASSERT_NE(coverOf(copy), nullptr);
    EXPECT_EQ(coverOf(copy)->codec, "png");
    EXPECT_EQ(valueOf(copy, "title"), "A Title");
}

TEST_F(PassthroughMetadataTest, HasATimecodeInQuickTimeAlone) {
    auto spec = mediaOf("mov", {videoOf("mpeg4")});
    spec.timecode = "01:00:00:00";
    MAKE_SOURCE(spec);
    ASSERT_EQ(probe(source()).streams.size(), 2U);
    EXPECT_EQ(copied(mov).streams.size(), 2U);
    EXPECT_EQ(copied(mp4).streams.size(), 1U);
}

} // namespace boxlift::media
