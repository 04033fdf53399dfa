#include "engine/media/reencode_tracks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

#include "engine/media/file_composition.h"
#include "engine/media/reencoder.h"
#include "engine/media/source_fixture.h"
#include "support/media_boxes.h"
#include "support/media_decode.h"
#include "support/media_probe.h"

namespace boxlift::media {

namespace {

using boxlift::test::MediaSpec;
using boxlift::test::probe;
using boxlift::test::ProbedFile;
using boxlift::test::StreamKind;
using Status = ExportSession::Status;

class ReencodeTracksTest : public test::SourceTest {
protected:
    ProbedFile exported(const test::ReencodeOptions& options = {}) {
        EXPECT_EQ(test::reencode(source(), output(), options).status, Status::completed);
        return probe(output());
    }
    /// An export that must fail so, and leave nothing.
    void expectFailure(ErrorKind kind) {
        const auto result = test::reencode(source(), output());
        EXPECT_EQ(result.status, Status::failed);
        EXPECT_EQ(result.error, kind);
        EXPECT_LT(result.lastProgress, 1);
        EXPECT_EQ(test::contents(folder()), std::vector<std::string>{"source"});
    }
    /// Overwrites a part of the source, given as fractions of its length.
    void damage(double from, double to) {
        const auto size = static_cast<double>(std::filesystem::file_size(source()));
        std::fstream file(source(), std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(static_cast<std::streamoff>(size * from));
        const std::string zeros(static_cast<std::size_t>(size * (to - from)), '\0');
        file.write(zeros.data(), static_cast<std::streamsize>(zeros.size()));
        ASSERT_TRUE(file.good());
    }
    void truncate(double to) {
        const auto size = static_cast<double>(std::filesystem::file_size(source()));
        std::filesystem::resize_file(source(), static_cast<std::uintmax_t>(size * to));
    }
};

MediaSpec movie() {
    MediaSpec spec;
    spec.video = {{}};
    spec.audio = {{}};
    return spec;
}

/// Four seconds, with the index in front.
MediaSpec longMovie() {
    MediaSpec spec = movie();
    spec.seconds = 4;
    spec.muxerOptions = {{"movflags", "+faststart"}};
    return spec;
}

TEST_F(ReencodeTracksTest, KeepEveryTrackOfSoundWithItsLanguage) {
    MediaSpec spec = movie();
    spec.audio = {{.frequencies = {440}, .language = "eng", .isDefault = true},
                  {.layout = "mono", .frequencies = {880}, .language = "ger"}};
    if (!make(spec))
        GTEST_SKIP() << missing();
    const ProbedFile file = exported();
    ASSERT_EQ(file.all(StreamKind::audio).size(), 2U);
    EXPECT_EQ(file.audio(0).language, "eng");
    EXPECT_EQ(file.audio(1).language, "ger");
    EXPECT_EQ(file.audio(0).codec, "aac");
    EXPECT_EQ(file.audio(1).channels, 1);
}

TEST_F(ReencodeTracksTest, KeepLateSoundLate) {
    MediaSpec spec = movie();
    spec.seconds = 2;
    spec.audio = {{.codec = "pcm_s16le", .startSeconds = 0.7}};
    if (!make(spec))
        GTEST_SKIP() << missing();
    ASSERT_NEAR(probe(source()).audio().startSeconds.value(), 0.7, 0.001);
    exported();
    EXPECT_NEAR(boxlift::test::decodeAudio(output()).startSeconds, 0.7, 0.03);
}

TEST_F(ReencodeTracksTest, NeedNoSound) {
    MediaSpec spec = movie();
    spec.audio.clear();
    if (!make(spec))
        GTEST_SKIP() << missing();
    EXPECT_EQ(exported().streams.size(), 1U);
}

TEST_F(ReencodeTracksTest, NeedNoPicture) {
    MediaSpec spec = movie();
    spec.video.clear();
    if (!make(spec))
        GTEST_SKIP() << missing();
    const ProbedFile file = exported();
    ASSERT_EQ(file.streams.size(), 1U);
    EXPECT_EQ(file.audio().codec, "aac");
    EXPECT_NEAR(file.durationSeconds.value(), 1, 0.03);
}

TEST_F(ReencodeTracksTest, KeepTextOfAWholeFile) {
    MediaSpec spec = movie();
    spec.format = "mp4";
    spec.subtitles = {{.events = {{0.1, 0.5, "one"}, {0.6, 0.9, "two"}}, .language = "eng"}};
    if (!make(spec))
        GTEST_SKIP() << missing();
    const ProbedFile file = exported();
    const auto texts = file.all(StreamKind::subtitle);
    ASSERT_EQ(texts.size(), 1U);
    EXPECT_EQ(texts.front()->language, "eng");
    EXPECT_GE(texts.front()->packets.size(), 2U);
}

TEST_F(ReencodeTracksTest, TakeACompositionsTracksAndTransformAlone) {
    MediaSpec spec = movie();
    spec.video.front().rotation = 90;
    if (!make(spec))
        GTEST_SKIP() << missing();
    const auto asset = test::openAsset(source());
    const auto track = asset->loadTracks(MediaType::video).at(0);
    FileComposition composition;
    const auto copy =
        composition.addMutableTrack(MediaType::video, MutableComposition::persistentTrackIdInvalid);
    copy->insertTimeRange(track->timeRange(), track, track->timeRange().start);
    copy->setPreferredTransform({-1, 0, 0, -1, 160, 120});
    const auto session = test::makeSession(composition, output());
    ASSERT_EQ(test::run(*session).status, Status::completed);
    const ProbedFile file = probe(output());
    ASSERT_EQ(file.streams.size(), 1U);
    ASSERT_TRUE(file.video().displayMatrix);
    EXPECT_EQ(*file.video().displayMatrix, (boxlift::test::DisplayMatrix{-1, 0, 0, -1, 160, 120}));
}

TEST_F(ReencodeTracksTest, RefuseAMovieWhoseEndIsMissing) {
    if (!make(longMovie()))
        GTEST_SKIP() << missing();
    truncate(0.5);
    expectFailure(ErrorKind::sourceEndsEarly);
}

TEST_F(ReencodeTracksTest, TakeABrokenOffBroadcastForWhatItIs) {
    MediaSpec spec = movie();
    spec.format = "mpegts";
    spec.seconds = 3;
    if (!make(spec))
        GTEST_SKIP() << missing();
    truncate(0.5);
    const ProbedFile file = exported();
    EXPECT_GT(file.durationSeconds.value(), 0.7);
    EXPECT_LT(file.durationSeconds.value(), 2.5);
}

TEST_F(ReencodeTracksTest, SkipWhatIsDamaged) {
    MediaSpec spec = longMovie();
    spec.audio.clear();
    if (!make(spec))
        GTEST_SKIP() << missing();
    damage(0.45, 0.5);
    const ProbedFile file = exported();
    EXPECT_GT(file.video().packets.size(), 70U);
    EXPECT_NEAR(file.durationSeconds.value(), 4, 0.1);
}

TEST_F(ReencodeTracksTest, RefuseATrackOfWhichNothingCanBeDecoded) {
    MediaSpec spec = longMovie();
    spec.audio.clear();
    spec.video.front().codec = "png";
    if (!make(spec))
        GTEST_SKIP() << missing();
    const auto boxes = boxlift::test::topLevelBoxes(source());
    ASSERT_EQ(boxes.back().type, "mdat");
    const auto size = static_cast<double>(std::filesystem::file_size(source()));
    damage(static_cast<double>(boxes.back().offset + 8) / size, 1);
    expectFailure(ErrorKind::cannotDecode);
}

} // namespace

} // namespace boxlift::media
