#include "engine/media/passthrough_session.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "engine/media/box_writer.h"
#include "engine/media/child_process.h"
#include "engine/media/passthrough_copier.h"
#include "engine/media/source_fixture.h"
#include "support/media_boxes.h"
#include "support/media_probe.h"

namespace boxlift::media {

namespace {

using boxlift::test::probe;
using boxlift::test::readFile;
using boxlift::test::writeFile;
using test::audioOf;
using test::copyTo;
using test::mediaOf;
using test::namesIn;
using test::openFile;
using test::typesFor;
using test::videoOf;
using Names = std::vector<std::string>;
using Status = ExportSession::Status;
using Types = std::vector<FileType>;

constexpr auto mp4 = FileType::AVFileTypeMPEG4;
constexpr auto mov = FileType::AVFileTypeQuickTimeMovie;
constexpr auto m4a = FileType::AVFileTypeAppleM4A;

class PassthroughSessionTest : public test::SourceTest {
protected:
    void expectFailure(FileType type, ErrorKind kind) const {
        const auto result = copyTo(output(), type, source());
        EXPECT_EQ(result.status, Status::failed);
        EXPECT_EQ(result.error, kind) << result.technical;
        EXPECT_EQ(namesIn(folder()), Names{"source"});
    }
    std::unique_ptr<ExportSession> makeSession() const {
        auto session = test::makeCopier(*openFile(source()));
        session->setOutputUrl(output());
        session->setOutputFileType(mp4);
        return session;
    }
};

} // namespace

TEST_F(PassthroughSessionTest, TakesWhatEachContainerTakes) {
    MAKE_SOURCE(mediaOf("mov", {videoOf("mpeg4")}, {audioOf("aac")}));
    EXPECT_EQ(typesFor(source()), (Types{mp4, mov, m4a}));
    MAKE_SOURCE(mediaOf("mov", {videoOf("mpeg4")}));
    EXPECT_EQ(typesFor(source()), (Types{mp4, mov}));
    MAKE_SOURCE(mediaOf("mov", {videoOf("prores_ks")}, {audioOf("pcm_s16le")}));
    EXPECT_EQ(typesFor(source()), Types{mov});
    MAKE_SOURCE(mediaOf("mp4", {videoOf("mpeg4")}, {audioOf("ac3")}));
    EXPECT_EQ(typesFor(source()), (Types{mp4, mov}));
    MAKE_SOURCE(mediaOf("wav", {}, {audioOf("pcm_s16le")}));
    EXPECT_EQ(typesFor(source()), Types{mov});
    MAKE_SOURCE(mediaOf("caf", {}, {audioOf("alac")}));
    EXPECT_EQ(typesFor(source()), (Types{mp4, mov, m4a}));
    MAKE_SOURCE(mediaOf("mpegts", {videoOf("mpeg2video")}, {audioOf("mp2")}));
    EXPECT_EQ(typesFor(source()), Types{mov});
}

TEST_F(PassthroughSessionTest, TakesNoFlac) {
    MAKE_SOURCE(mediaOf("flac", {}, {audioOf("flac")}));
    EXPECT_EQ(typesFor(source()), Types());
    auto spec = mediaOf("mp4", {videoOf("mpeg4")}, {audioOf("flac")});
    spec.muxerOptions = {{"strict", "experimental"}};
    MAKE_SOURCE(spec);
    EXPECT_EQ(typesFor(source()), Types());
}

TEST_F(PassthroughSessionTest, TakesVp9IntoMpeg4Alone) {
    auto video = videoOf("libvpx-vp9");
    video.seconds = 0.2;
    MAKE_SOURCE(mediaOf("mp4", {video}));
    EXPECT_EQ(typesFor(source()), Types{mp4});
    const auto result = copyTo(output(), mp4, source());
    EXPECT_EQ(result.status, Status::completed) << result.technical;
    EXPECT_EQ(probe(output()).video().codec, "vp9");
}

TEST_F(PassthroughSessionTest, TakesNoTrackOfSeveralStretches) {
    MAKE_SOURCE(mediaOf("mov", {videoOf("mpeg4")}));
    constexpr std::array<std::string_view, 4> place{"moov", "trak", "edts", "elst"};
    writeFile(source(), test::editBox(readFile(source()), place, [](std::string_view) {
                  const std::string edit = test::u32(400) + test::u32(0) + test::u32(0x10000);
                  return test::u32(0) + test::u32(2) + edit + edit;
              }));
    EXPECT_EQ(typesFor(source()), Types());
}

TEST_F(PassthroughSessionTest, PutsTheIndexWhereItIsWanted) {
    MAKE_SOURCE(mediaOf("mov", {videoOf("mpeg4")}, {audioOf("aac")}));
    for (const bool optimize : {true, false}) {
        std::filesystem::remove(output());
        const auto result = copyTo(output(), mp4, *openFile(source()), optimize);
        ASSERT_EQ(result.status, Status::completed) << result.technical;
        const auto boxes = boxlift::test::topLevelBoxTypes(output());
        EXPECT_EQ(std::find(boxes.begin(), boxes.end(), "moov") <
                      std::find(boxes.begin(), boxes.end(), "mdat"),
                  optimize);
    }
}

TEST_F(PassthroughSessionTest, NeedNotMoveTheMediaOfALargeFile) {
    auto audio = audioOf("alac");
    audio.signal = boxlift::test::Signal::noise;
    auto spec = mediaOf("mov", {videoOf("mpeg4")}, {audio});
    spec.seconds = 60;
    MAKE_SOURCE(spec);
    ASSERT_GT(std::filesystem::file_size(source()), 8U << 20);
    ASSERT_EQ(copyTo(output(), mp4, *openFile(source()), true).status, Status::completed);
    // Media that was moved for the index would leave nothing in between.
    EXPECT_EQ(boxlift::test::topLevelBoxTypes(output()), (Names{"ftyp", "moov", "free", "mdat"}));
    EXPECT_EQ(probe(output()).video().payloadHashes(), probe(source()).video().payloadHashes());
    EXPECT_EQ(probe(output()).audio().payloadHashes(), probe(source()).audio().payloadHashes());
}

TEST_F(PassthroughSessionTest, LeavesTheSourceAndItsFolderAsTheyWere) {
    MAKE_SOURCE(mediaOf("mov", {videoOf("mpeg4")}, {audioOf("aac")}));
    const std::string before = readFile(source());
    EXPECT_EQ(copyTo(output(), mp4, source()).status, Status::completed);
    EXPECT_EQ(namesIn(folder()), (Names{"out", "source"}));
    EXPECT_EQ(readFile(source()), before);
}

TEST_F(PassthroughSessionTest, ReplacesNothing) {
    MAKE_SOURCE(mediaOf("mov", {videoOf("mpeg4")}));
    writeFile(output(), "theirs");
    const auto result = copyTo(output(), mp4, source());
    EXPECT_EQ(result.status, Status::failed);
    EXPECT_EQ(result.error, ErrorKind::nameTaken);
    EXPECT_EQ(readFile(output()), "theirs");
    const std::string before = readFile(source());
    EXPECT_EQ(copyTo(source(), mp4, source()).error, ErrorKind::nameTaken);
    EXPECT_EQ(readFile(source()), before);
}

TEST_F(PassthroughSessionTest, SaysThatTheDiskIsFull) {
    auto spec = mediaOf("mov", {}, {audioOf("pcm_s16le")});
    spec.seconds = 8;
    MAKE_SOURCE(spec);
    EXPECT_TRUE(test::passesInChild([this] {
        test::limitFileSize(1'100'000);
        expectFailure(mov, ErrorKind::noSpace);
    }));
}

TEST_F(PassthroughSessionTest, FindsAMovieThatWasCutOff) {
    auto spec = mediaOf("mp4", {videoOf("mpeg4")}, {audioOf("aac")});
    spec.muxerOptions = {{"movflags", "faststart"}};
    MAKE_SOURCE(spec);
    std::filesystem::resize_file(source(), std::filesystem::file_size(source()) - 1);
    expectFailure(mp4, ErrorKind::sourceEndsEarly);
}

TEST_F(PassthroughSessionTest, FindsSoundThatWasCutOff) {
    auto spec = mediaOf("aiff", {}, {audioOf("pcm_s16be")});
    spec.seconds = 4;
    MAKE_SOURCE(spec);
    std::filesystem::resize_file(source(), std::filesystem::file_size(source()) / 2);
    expectFailure(mov, ErrorKind::sourceEndsEarly);
}

TEST_F(PassthroughSessionTest, FindsAFileThatShrinksMeanwhile) {
    auto spec = mediaOf("mov", {}, {audioOf("pcm_s16le")});
    spec.seconds = 30;
    spec.muxerOptions = {{"movflags", "faststart"}};
    MAKE_SOURCE(spec);
    const auto session = test::makeCopier(*openFile(source()));
    session->setOutputUrl(output());
    session->setOutputFileType(mov);
    std::filesystem::resize_file(source(), std::filesystem::file_size(source()) / 2);
    const auto result = test::finish(*session);
    EXPECT_EQ(result.status, Status::failed);
    EXPECT_EQ(result.error, ErrorKind::sourceUnreadable) << result.technical;
    EXPECT_EQ(namesIn(folder()), Names{"source"});
}

TEST_F(PassthroughSessionTest, FindsThatThereIsNoMedia) {
    auto spec = mediaOf("mp4", {}, {audioOf("aac")});
    spec.muxerOptions = {{"movflags", "frag_keyframe+empty_moov+default_base_moof"}};
    MAKE_SOURCE(spec);
    const auto boxes = boxlift::test::topLevelBoxes(source());
    const auto fragment = std::find_if(boxes.begin(), boxes.end(),
                                       [](const auto& box) { return box.type == "moof"; });
    ASSERT_NE(fragment, boxes.end());
    std::filesystem::resize_file(source(), fragment->offset);
    expectFailure(mp4, ErrorKind::cannotDecode);
}

TEST_F(PassthroughSessionTest, LeavesNothingWhenItIsCancelled) {
    auto spec = mediaOf("mov", {videoOf("mpeg4")}, {audioOf("pcm_s16le")});
    spec.audio[0].seconds = 60;
    MAKE_SOURCE(spec);
    const auto before = makeSession();
    before->setOutputFileType(mov);
    before->cancelExport();
    EXPECT_EQ(test::finish(*before).status, Status::cancelled);
    EXPECT_EQ(namesIn(folder()), Names{"source"});

    auto dropped = makeSession();
    dropped->setOutputFileType(mov);
    dropped->exportAsynchronously();
    dropped->cancelExport();
    EXPECT_TRUE(dropped->waitUntilFinished(std::chrono::seconds(10)));
    EXPECT_EQ(dropped->status() == Status::completed, std::filesystem::exists(output()));
    EXPECT_NE(dropped->status(), Status::failed);
}

TEST_F(PassthroughSessionTest, ShowsItsProgress) {
    MAKE_SOURCE(mediaOf("mov", {videoOf("mpeg4")}, {audioOf("aac")}));
    const auto session = makeSession();
    EXPECT_EQ(session->progress(), 0);
    EXPECT_EQ(test::finish(*session).status, Status::completed);
    EXPECT_EQ(session->progress(), 1);
}

} // namespace boxlift::media
