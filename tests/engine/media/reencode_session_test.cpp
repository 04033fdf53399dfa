#include "engine/media/reencode_session.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "engine/media/box_writer.h"
#include "engine/media/reencoder.h"
#include "engine/media/source_fixture.h"
#include "support/media_boxes.h"
#include "support/media_decode.h"
#include "support/media_measure.h"
#include "support/media_probe.h"

namespace boxlift::media {

namespace {

using boxlift::test::MediaSpec;
using boxlift::test::probe;
using boxlift::test::ProbedFile;
using boxlift::test::ProbedStream;
using boxlift::test::VideoSpec;
using Status = ExportSession::Status;

class ReencodeSessionTest : public test::SourceTest {
protected:
    /// The output of one export, which must succeed and leave nothing else.
    ProbedFile exported(const test::ReencodeOptions& options = {}) {
        std::filesystem::remove(output());
        const auto result = test::reencode(source(), output(), options);
        EXPECT_EQ(result.status, Status::completed);
        EXPECT_EQ(test::contents(folder()), (std::vector<std::string>{"out", "source"}));
        return probe(output());
    }
};

MediaSpec withVideo(const VideoSpec& video, const std::string& format = "mov") {
    MediaSpec spec;
    spec.format = format;
    spec.video = {video};
    return spec;
}

std::vector<double> presentationTimes(const ProbedStream& stream) {
    std::vector<double> times;
    for (const auto& packet : stream.packets)
        if (!packet.isDiscarded)
            times.push_back(stream.seconds(packet.pts.value()));
    std::sort(times.begin(), times.end());
    return times;
}

void expectSameTimes(const ProbedStream& first, const ProbedStream& second) {
    const auto expected = presentationTimes(first);
    const auto times = presentationTimes(second);
    ASSERT_EQ(times.size(), expected.size());
    for (std::size_t i = 0; i < times.size(); ++i)
        EXPECT_NEAR(times[i], expected[i], 0.0005) << "picture " << i;
}

struct SourceRow {
    const char* codec;
    const char* pixelFormat;
    const char* format;
};

constexpr SourceRow sources[] = {
    {"libx264", "yuv420p", "mp4"},
    {"libx264", "yuv422p", "mov"},
    {"libx264", "yuv444p", "mov"},
    {"libx264", "yuv420p10le", "mov"},
    {"libx264", "yuvj420p", "mov"},
    {"libx265", "yuv420p10le", "mov"},
    {"prores_ks", "yuv422p10le", "mov"},
    {"prores_ks", "yuva444p10le", "mov"},
    {"qtrle", "argb", "mov"},
    {"png", "rgba", "mov"},
    {"mjpeg", "yuvj422p", "mov"},
    {"mpeg2video", "yuv420p", "mpegts"},
    {"mpeg4", "yuv420p", "mp4"},
};

TEST_F(ReencodeSessionTest, MakesPlainH264OfEveryKindOfPicture) {
    int made = 0;
    for (const SourceRow& row : sources) {
        SCOPED_TRACE(std::string(row.codec) + " " + row.pixelFormat);
        VideoSpec video;
        video.codec = row.codec;
        video.pixelFormat = row.pixelFormat;
        std::filesystem::remove(source());
        if (!make(withVideo(video, row.format)))
            continue;
        ++made;
        ASSERT_EQ(probe(source()).video().pixelFormat, row.pixelFormat);
        const ProbedFile file = exported();
        EXPECT_EQ(file.video().codec, "h264");
        EXPECT_EQ(file.video().profile, "High");
        EXPECT_EQ(file.video().pixelFormat, "yuv420p");
        EXPECT_EQ(file.video().width, 160);
        EXPECT_EQ(file.video().height, 120);
        EXPECT_EQ(file.video().packets.size(), 25U);
    }
    EXPECT_GE(made, 8) << missing();
}

TEST_F(ReencodeSessionTest, MakesOddSizesEven) {
    VideoSpec video;
    video.codec = "qtrle";
    video.pixelFormat = "rgb24";
    video.width = 157;
    video.height = 93;
    if (!make(withVideo(video)))
        GTEST_SKIP() << missing();
    const ProbedFile file = exported();
    EXPECT_EQ(file.video().width, 156);
    EXPECT_EQ(file.video().height, 92);
}

TEST_F(ReencodeSessionTest, DeinterlacesAndKeepsTheNumberOfPictures) {
    VideoSpec video;
    video.codec = "mpeg2video";
    video.interlaced = true;
    if (!make(withVideo(video)))
        GTEST_SKIP() << missing();
    ASSERT_TRUE(boxlift::test::decodeVideo(source()).at(3).isInterlaced);
    const ProbedFile file = exported();
    const auto pictures = boxlift::test::decodeVideo(output());
    ASSERT_EQ(pictures.size(), 25U);
    for (const auto& picture : pictures)
        EXPECT_FALSE(picture.isInterlaced);
    expectSameTimes(probe(source()).video(), file.video());
}

TEST_F(ReencodeSessionTest, GivesAnamorphicPicturesSquarePixels) {
    VideoSpec video;
    video.width = 144;
    video.height = 108;
    video.sampleAspect = {4, 3};
    if (!make(withVideo(video)))
        GTEST_SKIP() << missing();
    ASSERT_EQ(probe(source()).video().sampleAspect, (boxlift::test::Ratio{4, 3}));
    const ProbedFile file = exported();
    EXPECT_EQ(file.video().width, 192);
    EXPECT_EQ(file.video().height, 108);
    EXPECT_EQ(file.video().sampleAspect.numerator, file.video().sampleAspect.denominator);
}

TEST_F(ReencodeSessionTest, KeepsTheRotationAsMetadata) {
    for (const int rotation : {90, 180, 270}) {
        VideoSpec video;
        video.rotation = rotation;
        video.mirrored = rotation == 180;
        std::filesystem::remove(source());
        if (!make(withVideo(video)))
            GTEST_SKIP() << missing();
        const auto matrix = probe(source()).video().displayMatrix;
        ASSERT_TRUE(matrix);
        const ProbedFile file = exported();
        EXPECT_EQ(file.video().displayMatrix, matrix) << rotation;
        EXPECT_EQ(file.video().width, 160);
        EXPECT_EQ(file.video().height, 120);
    }
}

TEST_F(ReencodeSessionTest, TellsHowPicturesAreProjected) {
    if (!make(withVideo({})))
        GTEST_SKIP() << missing();
    const std::string stereo = test::fullBox("st3d", 0, "\2");
    const std::string pose = test::fullBox("prhd", 0, std::string(12, '\0'));
    const std::string layout = test::fullBox("equi", 0, std::string(16, '\0'));
    const std::string head = test::fullBox("svhd", 0, std::string("maker", 6));
    const std::string boxes = stereo + test::box("sv3d", head + test::box("proj", pose + layout));
    using boxlift::test::readFile;
    boxlift::test::writeFile(source(), test::withSampleEntryBoxes(readFile(source()), boxes));
    for (const FileType type : {FileType::AVFileTypeMPEG4, FileType::AVFileTypeQuickTimeMovie}) {
        const ProbedFile file =
            exported({.preset = ExportPreset::AVAssetExportPreset1280x720, .type = type});
        EXPECT_EQ(file.video().projection, "equirectangular");
        EXPECT_EQ(file.video().stereo, "side by side");
    }
}

TEST_F(ReencodeSessionTest, FitsAPortraitRecordingIntoTheTurnedBox) {
    VideoSpec video;
    video.width = 1920;
    video.height = 1080;
    video.rotation = 90;
    video.seconds = 0.12;
    if (!make(withVideo(video)))
        GTEST_SKIP() << missing();
    const ProbedFile file = exported({.preset = ExportPreset::AVAssetExportPreset1280x720});
    EXPECT_EQ(file.video().width, 1280);
    EXPECT_EQ(file.video().height, 720);
    const auto matrix = file.video().displayMatrix;
    ASSERT_TRUE(matrix);
    EXPECT_DOUBLE_EQ(matrix->b, 1);
    EXPECT_DOUBLE_EQ(matrix->c, -1);
    EXPECT_DOUBLE_EQ(matrix->tx, 720) << "the place follows the new size";
}

TEST_F(ReencodeSessionTest, MapsHighRangeToBt709) {
    for (const char* transfer : {"smpte2084", "arib-std-b67"}) {
        VideoSpec video;
        video.pixelFormat = "yuv420p10le";
        video.colour = {"bt2020", transfer, "bt2020nc", "tv"};
        std::filesystem::remove(source());
        if (!make(withVideo(video)))
            GTEST_SKIP() << missing();
        ASSERT_EQ(probe(source()).video().colour.transfer, transfer);
        const auto colour = exported().video().colour;
        EXPECT_EQ(colour, (boxlift::test::ColourTags{"bt709", "bt709", "bt709", "tv"}));
    }
}

TEST_F(ReencodeSessionTest, LeavesUntaggedColourUntagged) {
    if (!make(withVideo({})))
        GTEST_SKIP() << missing();
    ASSERT_EQ(probe(source()).video().colour.primaries, "");
    const auto colour = exported().video().colour;
    EXPECT_EQ(colour.primaries, "");
    EXPECT_EQ(colour.transfer, "");
    EXPECT_EQ(colour.matrix, "");
}

TEST_F(ReencodeSessionTest, KeepsVariableFrameRates) {
    VideoSpec video;
    video.variableFrameRate = true;
    video.bFrames = 2;
    if (!make(withVideo(video)))
        GTEST_SKIP() << missing();
    const ProbedFile before = probe(source());
    const ProbedFile after = exported();
    expectSameTimes(before.video(), after.video());
    EXPECT_NEAR(after.durationSeconds.value(), before.durationSeconds.value(), 0.002);
}

TEST_F(ReencodeSessionTest, RemovesATransportStreamsStartOnce) {
    MediaSpec spec = withVideo({}, "mpegts");
    spec.audio = {{.startSeconds = 0.5}};
    if (!make(spec))
        GTEST_SKIP() << missing();
    const ProbedFile before = probe(source());
    ASSERT_GT(before.startSeconds.value(), 1);
    const ProbedFile after = exported();
    EXPECT_NEAR(after.video().startSeconds.value(), 0, 0.001);
    EXPECT_NEAR(after.audio().startSeconds.value() - after.video().startSeconds.value(),
                before.audio().startSeconds.value() - before.video().startSeconds.value(), 0.03);
}

TEST_F(ReencodeSessionTest, LooksLikeItsSource) {
    VideoSpec video;
    video.width = 320;
    video.height = 240;
    video.encoderOptions = {{"crf", "10"}};
    if (!make(withVideo(video)))
        GTEST_SKIP() << missing();
    exported();
    const auto before = boxlift::test::decodeVideo(source());
    const auto after = boxlift::test::decodeVideo(output());
    ASSERT_EQ(before.size(), after.size());
    for (std::size_t i = 0; i < before.size(); ++i) {
        EXPECT_EQ(boxlift::test::frameNumber(after[i]), boxlift::test::frameNumber(before[i]));
        EXPECT_GE(boxlift::test::ssim(before[i], after[i]), 0.98) << "picture " << i;
    }
}

TEST_F(ReencodeSessionTest, PutsTheIndexInFrontOnlyWhenAsked) {
    MediaSpec spec = withVideo({});
    spec.audio = {{}};
    if (!make(spec))
        GTEST_SKIP() << missing();
    const auto place = [this](const char* box) {
        const auto boxes = boxlift::test::topLevelBoxes(output());
        const auto found = std::find_if(boxes.begin(), boxes.end(),
                                        [box](const auto& entry) { return entry.type == box; });
        EXPECT_NE(found, boxes.end());
        return found - boxes.begin();
    };
    exported({.optimize = true});
    EXPECT_LT(place("moov"), place("mdat"));
    exported({.type = FileType::AVFileTypeQuickTimeMovie, .optimize = false});
    EXPECT_GT(place("moov"), place("mdat"));
}

TEST_F(ReencodeSessionTest, OffersM4aForSoundAlone) {
    const auto typesOf = [this] {
        return test::makeSession(*test::openAsset(source()), output())->supportedFileTypes();
    };
    MediaSpec spec = withVideo({});
    spec.audio = {{}};
    if (!make(spec))
        GTEST_SKIP() << missing();
    const std::vector<FileType> movies{FileType::AVFileTypeMPEG4,
                                       FileType::AVFileTypeQuickTimeMovie};
    EXPECT_EQ(typesOf(), movies);

    spec.video.clear();
    std::filesystem::remove(source());
    ASSERT_TRUE(make(spec));
    std::vector<FileType> all = movies;
    all.push_back(FileType::AVFileTypeAppleM4A);
    EXPECT_EQ(typesOf(), all);
}

TEST_F(ReencodeSessionTest, ShowsProgressThatNeverGoesBackAndIsWholeOnlyAtTheEnd) {
    VideoSpec video;
    video.width = 640;
    video.height = 480;
    MediaSpec spec = withVideo(video);
    spec.seconds = 6;
    spec.audio = {{}};
    if (!make(spec))
        GTEST_SKIP() << missing();
    const auto result = test::reencode(source(), output(), {.optimize = true});
    EXPECT_EQ(result.status, Status::completed);
    EXPECT_FLOAT_EQ(result.lastProgress, 1);
    EXPECT_TRUE(std::is_sorted(result.progress.begin(), result.progress.end()));
    ASSERT_FALSE(result.progress.empty());
    EXPECT_LT(result.progress.back(), 1);
    EXPECT_TRUE(std::any_of(result.progress.begin(), result.progress.end(),
                            [](float value) { return value > 0.2F && value < 0.8F; }));
}

} // namespace

} // namespace boxlift::media
