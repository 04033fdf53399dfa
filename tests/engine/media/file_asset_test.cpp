#include "engine/media/file_asset.h"

#include <gtest/gtest.h>

#include <optional>

#include "engine/media/error.h"
#include "engine/media/passthrough_copier.h"
#include "engine/media/source_fixture.h"
#include "model/cancelled.h"
#include "support/media_boxes.h"
#include "support/media_probe.h"

namespace boxlift::media {

namespace {

using boxlift::test::readFile;
using boxlift::test::writeFile;
using test::audioOf;
using test::mediaOf;
using test::openFile;
using test::videoOf;

class FileAssetTest : public test::SourceTest {
protected:
    /// Overwrites the last `from` of the source.
    void patch(std::string_view from, std::string_view to) const {
        std::string bytes = readFile(source());
        const auto place = bytes.rfind(from);
        ASSERT_NE(place, std::string::npos);
        writeFile(source(), bytes.replace(place, from.size(), to));
    }
    std::optional<ErrorKind> refusal() const {
        try {
            openFile(source());
        } catch (const Error& error) {
            return error.kind();
        }
        return std::nullopt;
    }
};

FourCharCode codeOf(const AssetTrack& track) {
    const auto formats = track.formatDescriptions();
    return formats.size() == 1 ? formats[0].mediaSubType : 0;
}

} // namespace

TEST_F(FileAssetTest, HasTheTracksOfTheFileInItsOrder) {
    auto spec = mediaOf("mov", {videoOf("libx264")}, {audioOf("aac"), audioOf("pcm_s16le")});
    spec.subtitles = {{.events = {{0, 1, "words"}}}};
    MAKE_SOURCE(spec);
    const auto asset = openFile(source());
    const auto tracks = asset->tracks();
    ASSERT_EQ(tracks.size(), 4U);
    EXPECT_EQ(tracks[0]->mediaType(), MediaType::video);
    EXPECT_EQ(codeOf(*tracks[0]), fourCharCode("avc1"));
    EXPECT_EQ(tracks[1]->mediaType(), MediaType::audio);
    EXPECT_EQ(codeOf(*tracks[1]), fourCharCode("aac "));
    EXPECT_EQ(codeOf(*tracks[2]), fourCharCode("lpcm"));
    EXPECT_EQ(tracks[3]->mediaType(), MediaType::text);
    EXPECT_EQ(asset->loadTracks(MediaType::audio), (std::vector{tracks[1], tracks[2]}));
    EXPECT_TRUE(asset->isReadable());
    EXPECT_NEAR(asset->duration().seconds(), 1, 0.001);
}

TEST_F(FileAssetTest, TurnsPicturesWithTheirCornerAtZero) {
    const std::array<AffineTransform, 4> expected{{{1, 0, 0, 1, 0, 0},
                                                   {0, 1, -1, 0, 120, 0},
                                                   {-1, 0, 0, -1, 160, 120},
                                                   {0, -1, 1, 0, 0, 160}}};
    for (int quarter = 0; quarter < 4; ++quarter) {
        auto video = videoOf("mpeg4");
        video.seconds = 0.2;
        video.rotation = 90 * quarter;
        MAKE_SOURCE(mediaOf("mov", {video}));
        const auto track = openFile(source())->tracks().at(0);
        EXPECT_EQ(track->preferredTransform(), expected[static_cast<std::size_t>(quarter)]);
        EXPECT_EQ(track->naturalSize(), (Size{160, 120}));
    }
}

TEST_F(FileAssetTest, MendsACamerasTranslation) {
    auto video = videoOf("mpeg4");
    video.displayMatrix = boxlift::test::DisplayMatrix{0, 1, -1, 0, 0, 0};
    MAKE_SOURCE(mediaOf("mov", {video}));
    EXPECT_EQ(openFile(source())->tracks().at(0)->preferredTransform(),
              (AffineTransform{0, 1, -1, 0, 120, 0}));
}

TEST_F(FileAssetTest, StretchesNaturalSizesByThePixelsAspect) {
    auto video = videoOf("mpeg4");
    video.width = 144;
    video.height = 108;
    video.sampleAspect = {4, 3};
    video.rotation = 90;
    for (const char* format : {"mov", "mp4"}) {
        MAKE_SOURCE(mediaOf(format, {video}));
        EXPECT_EQ(openFile(source())->tracks().at(0)->naturalSize(), (Size{192, 108}));
    }
}

TEST_F(FileAssetTest, StretchesPicturesOfProgramStreams) {
    auto video = videoOf("mpeg2video");
    video.sampleAspect = {4, 3};
    video.width = 144;
    video.height = 108;
    MAKE_SOURCE(mediaOf("vob", {video}));
    const auto track = openFile(source())->tracks().at(0);
    EXPECT_EQ(codeOf(*track), fourCharCode("mp2v"));
    EXPECT_EQ(track->naturalSize(), (Size{192, 108}));
}

TEST_F(FileAssetTest, TakesNoCoverForATrack) {
    for (const char* format : {"mp4", "ipod"}) {
        auto spec = mediaOf(format, {}, {audioOf("aac")});
        spec.cover.emplace();
        MAKE_SOURCE(spec);
        ASSERT_EQ(boxlift::test::probe(source()).streams.size(), 2U);
        const auto tracks = openFile(source())->tracks();
        ASSERT_EQ(tracks.size(), 1U);
        EXPECT_EQ(tracks[0]->mediaType(), MediaType::audio);
    }
}

TEST_F(FileAssetTest, MayHaveNothingButText) {
    auto spec = mediaOf("mp4", {});
    spec.subtitles = {{.events = {{0, 1, "words"}}}};
    MAKE_SOURCE(spec);
    const auto asset = openFile(source());
    ASSERT_EQ(asset->tracks().size(), 1U);
    EXPECT_EQ(asset->tracks()[0]->mediaType(), MediaType::text);
    EXPECT_TRUE(asset->loadTracks(MediaType::video).empty());
    EXPECT_TRUE(asset->loadTracks(MediaType::audio).empty());
    EXPECT_TRUE(asset->isReadable());
}

TEST_F(FileAssetTest, IsNotReadableWhenProtected) {
    MAKE_SOURCE(mediaOf("mp4", {videoOf("mpeg4")}, {audioOf("aac")}));
    patch("mp4a", "enca");
    EXPECT_FALSE(openFile(source())->isReadable());
}

TEST_F(FileAssetTest, OpensWithCodecsThatNobodyKnows) {
    MAKE_SOURCE(mediaOf("mov", {videoOf("mpeg4")}));
    patch("mp4v", "zzzz");
    const auto asset = openFile(source());
    ASSERT_EQ(asset->tracks().size(), 1U);
    EXPECT_EQ(codeOf(*asset->tracks()[0]), fourCharCode("zzzz"));
    EXPECT_TRUE(asset->isReadable());
}

TEST_F(FileAssetTest, TellsTracksOfRawSound) {
    struct Row {
        const char* format;
        const char* encoder;
        FourCharCode code;
    };
    for (const Row& row :
         {Row{"adts", "aac", fourCharCode("aac ")}, Row{"ac3", "ac3", fourCharCode("ac-3")},
          Row{"eac3", "eac3", fourCharCode("ec-3")}, Row{"flac", "flac", fourCharCode("flac")},
          Row{"mp2", "mp2", fourCharCode(".mp2")}, Row{"wav", "pcm_s24le", fourCharCode("lpcm")},
          Row{"w64", "pcm_f32le", fourCharCode("lpcm")},
          Row{"aiff", "pcm_s16be", fourCharCode("lpcm")},
          Row{"caf", "pcm_s16be", fourCharCode("lpcm")},
          Row{"au", "pcm_mulaw", fourCharCode("ulaw")}}) {
        MAKE_SOURCE(mediaOf(row.format, {}, {audioOf(row.encoder)}));
        const auto asset = openFile(source());
        ASSERT_EQ(asset->tracks().size(), 1U) << row.format;
        EXPECT_EQ(asset->tracks()[0]->mediaType(), MediaType::audio) << row.format;
        EXPECT_EQ(codeOf(*asset->tracks()[0]), row.code) << row.format;
        EXPECT_NEAR(asset->duration().seconds(), 1, 0.1) << row.format;
    }
}

TEST_F(FileAssetTest, RefusesForeignContainersWhateverTheyAreCalled) {
    const auto video = videoOf("mpeg4");
    for (const char* format : {"matroska", "avi", "flv", "m4v"}) {
        auto spec = mediaOf(format, {format == std::string("flv") ? videoOf("flv") : video});
        MAKE_SOURCE(spec);
        EXPECT_EQ(refusal(), ErrorKind::cannotDecode) << format;
    }
    MAKE_SOURCE(mediaOf("ogg", {}, {audioOf("flac")}));
    EXPECT_EQ(refusal(), ErrorKind::cannotDecode);
}

TEST_F(FileAssetTest, RefusesWhatIsNoMedia) {
    const std::string playlist = "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\nsource.mp4\n";
    const std::string picture = "\x89PNG\r\n\x1a\n" + std::string(100, '\0');
    for (const std::string& bytes :
         {std::string(), std::string("words"), playlist, picture, std::string(5000, '\0')}) {
        writeFile(source(), bytes);
        EXPECT_EQ(refusal(), ErrorKind::cannotDecode) << bytes.substr(0, 10);
    }
}

// One track header that a single flipped bit had made something else kept the demuxer busy for
// 0.7 s for each of the file's fragments.
TEST_F(FileAssetTest, RefusesFragmentsOfATrackWithoutANumber) {
    auto spec = mediaOf("mp4", {videoOf("mpeg4")});
    for (const bool isFragmented : {true, false}) {
        spec.muxerOptions = {{"movflags", isFragmented ? "frag_keyframe+empty_moov" : "faststart"}};
        MAKE_SOURCE(spec);
        EXPECT_EQ(refusal(), std::nullopt);
        patch("tkhd", "tkid");
        EXPECT_EQ(refusal().has_value(), isFragmented);
    }
}

TEST_F(FileAssetTest, RefusesARecordingThatWasKilled) {
    MAKE_SOURCE(mediaOf("mov", {videoOf("mpeg4")}));
    const auto boxes = boxlift::test::topLevelBoxes(source());
    ASSERT_EQ(boxes.back().type, "moov");
    std::filesystem::resize_file(source(), boxes.back().offset);
    EXPECT_EQ(refusal(), ErrorKind::cannotDecode);
}

TEST_F(FileAssetTest, StopsWhenAsked) {
    MAKE_SOURCE(mediaOf("mp4", {}, {audioOf("aac")}));
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW(FileAsset::open(InputFile::open(source()), stop.get_token()), Cancelled);
}

} // namespace boxlift::media
