#include "engine/media/passthrough_session.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "engine/media/copy_fixture.h"
#include "engine/media/file_composition.h"
#include "engine/media/negative_offsets.h"
#include "support/media_decode.h"
#include "support/media_probe.h"

namespace boxlift::media {

namespace {

using boxlift::test::probe;
using boxlift::test::ProbedFile;
using boxlift::test::ProbedStream;
using boxlift::test::StreamKind;
using test::audioOf;
using test::mediaOf;
using test::openFile;
using test::videoOf;
using Status = ExportSession::Status;

constexpr auto mp4 = FileType::AVFileTypeMPEG4;
constexpr auto mov = FileType::AVFileTypeQuickTimeMovie;
constexpr auto m4a = FileType::AVFileTypeAppleM4A;

/// What arrives in the output, of sources of every kind.
class PassthroughTracksTest : public test::CopyTest {
protected:
    /// Copies and compares every payload.
    ProbedFile copiedWhole(FileType type) const {
        const ProbedFile before = probe(source());
        const ProbedFile after = copied(type);
        for (const StreamKind kind : {StreamKind::video, StreamKind::audio}) {
            const auto old = before.all(kind);
            const auto copy = after.all(kind);
            EXPECT_EQ(copy.size(), old.size());
            for (std::size_t i = 0; i < std::min(old.size(), copy.size()); ++i) {
                EXPECT_FALSE(old[i]->packets.empty());
                EXPECT_EQ(copy[i]->codec, old[i]->codec);
                EXPECT_EQ(copy[i]->payloadHashes(), old[i]->payloadHashes());
            }
        }
        return after;
    }
    /// A composition of the source's first picture track.
    FileComposition pictureOnly(const AffineTransform& transform = {}) const {
        const auto asset = openFile(source());
        const auto track = asset->loadTracks(MediaType::video).at(0);
        FileComposition composition;
        const auto shown = composition.addMutableTrack(MediaType::video, 0);
        shown->insertTimeRange(track->timeRange(), track, track->timeRange().start);
        shown->setPreferredTransform(transform);
        return composition;
    }
};

/// Every step from packet to packet is of this many ticks of this time base; the last may end
/// early.
void expectCadence(const ProbedStream& stream, std::int64_t step, int perSecond) {
    ASSERT_EQ(stream.timeBase, (boxlift::test::Ratio{1, perSecond}));
    ASSERT_GT(stream.packets.size(), 10U);
    for (std::size_t i = 1; i < stream.packets.size(); ++i)
        EXPECT_EQ(stream.packets[i].dts.value() - stream.packets[i - 1].dts.value(), step) << i;
}

double startOf(const ProbedStream& stream) {
    return stream.seconds(stream.packets.at(0).pts.value());
}

} // namespace

TEST_F(PassthroughTracksTest, AreTheSameSamples) {
    auto video = videoOf("libx264");
    video.bFrames = 2;
    MAKE_SOURCE(mediaOf("mov", {video}, {audioOf("aac"), audioOf("ac3")}));
    for (const FileType type : {mp4, mov}) {
        const ProbedFile copy = copiedWhole(type);
        EXPECT_EQ(copy.video().codecTag, "avc1");
        EXPECT_NEAR(copy.durationSeconds.value(), 1, 0.01);
        EXPECT_NEAR(startOf(copy.video()), 0, 0.001);
    }
}

TEST_F(PassthroughTracksTest, AreTheSameSamplesInQuickTime) {
    for (const char* codec : {"prores_ks", "mjpeg", "png", "mpeg2video", "rawvideo"}) {
        auto video = videoOf(codec);
        video.seconds = 0.4;
        MAKE_SOURCE(mediaOf("mov", {video}, {audioOf("alac")}));
        copiedWhole(mov);
    }
    for (const char* codec : {"pcm_s24le", "pcm_s16be", "pcm_mulaw", "pcm_alaw", "adpcm_ima_qt"}) {
        MAKE_SOURCE(mediaOf("mov", {}, {audioOf(codec)}));
        const ProbedFile copy = copied(mov);
        EXPECT_EQ(copy.audio().payloadHash, probe(source()).audio().payloadHash) << codec;
        // To the end of a block of 64 samples.
        EXPECT_NEAR(copy.durationSeconds.value(), 1, 0.0015) << codec;
    }
}

TEST_F(PassthroughTracksTest, OfATransportStreamStartAtZeroWithAConstantCadence) {
    auto video = videoOf("libx264");
    video.bFrames = 2;
    auto spec = mediaOf("mpegts", {video}, {audioOf("aac")});
    spec.seconds = 3;
    MAKE_SOURCE(spec);
    ASSERT_NEAR(probe(source()).startSeconds.value(), 1.4, 0.1);
    const ProbedFile before = probe(source());
    const ProbedFile copy = copiedWhole(mp4);
    expectCadence(copy.audio(), 1024, 44100);
    EXPECT_NEAR(copy.durationSeconds.value(), 3, 0.1);
    EXPECT_NEAR(startOf(copy.video()) - startOf(copy.audio()),
                startOf(before.video()) - startOf(before.audio()), 0.001);
    EXPECT_TRUE(copy.video().hasHeaderData);
}

TEST_F(PassthroughTracksTest, OfAnMp3HaveAConstantCadence) {
    auto spec = mediaOf("mp3", {}, {audioOf("libmp3lame")});
    spec.seconds = 3;
    MAKE_SOURCE(spec);
    for (const FileType type : {mp4, mov}) {
        const ProbedFile copy = copiedWhole(type);
        expectCadence(copy.audio(), 1152, 44100);
        EXPECT_NEAR(copy.durationSeconds.value(), 3, 0.1);
    }
}

TEST_F(PassthroughTracksTest, OfAnAdtsFileHaveAConstantCadence) {
    auto spec = mediaOf("adts", {}, {audioOf("aac")});
    spec.seconds = 3;
    MAKE_SOURCE(spec);
    for (const FileType type : {mp4, mov, m4a}) {
        const ProbedFile copy = copiedWhole(type);
        expectCadence(copy.audio(), 1024, 44100);
        EXPECT_TRUE(copy.audio().hasHeaderData);
    }
}

TEST_F(PassthroughTracksTest, OfABroadcastWhoseClockStartsAnewGoOn) {
    auto spec = mediaOf("mpegts", {videoOf("libx264")}, {audioOf("aac")});
    spec.seconds = 3;
    MAKE_SOURCE(spec);
    MAKE_SOURCE(spec, "clip");
    boxlift::test::writeFile(source(), boxlift::test::readFile(source()) +
                                           boxlift::test::readFile(path("clip")));
    const ProbedFile copy = copiedWhole(mp4);
    EXPECT_NEAR(copy.durationSeconds.value(), 6, 0.15);
    EXPECT_NEAR(copy.video().durationSeconds.value(), copy.audio().durationSeconds.value(), 0.15);
}

TEST_F(PassthroughTracksTest, StayAsLateAsTheyWere) {
    auto audio = audioOf("ac3");
    audio.startSeconds = 0.5;
    MAKE_SOURCE(mediaOf("mov", {videoOf("mpeg4")}, {audio}));
    for (const FileType type : {mp4, mov}) {
        copiedWhole(type);
        const auto tracks = openFile(output())->tracks();
        EXPECT_NEAR(tracks.at(0)->timeRange().start.seconds(), 0, 0.001);
        EXPECT_NEAR(tracks.at(1)->timeRange().start.seconds(), 0.5, 0.01);
    }
}

TEST_F(PassthroughTracksTest, SoundAsTheyDid) {
    auto audio = audioOf("aac");
    audio.signal = boxlift::test::Signal::impulses;
    audio.impulses = {22050};
    MAKE_SOURCE(mediaOf("mp4", {}, {audio}));
    const auto before = boxlift::test::decodeAudio(source());
    for (const FileType type : {mp4, mov, m4a}) {
        copiedWhole(type);
        const auto after = boxlift::test::decodeAudio(output());
        EXPECT_EQ(after.samples, before.samples);
        EXPECT_EQ(after.startSeconds, before.startSeconds);
    }
}

TEST_F(PassthroughTracksTest, OfAFragmentedMovieAreWhole) {
    auto spec = mediaOf("mp4", {videoOf("libx264")}, {audioOf("aac")});
    spec.seconds = 2;
    spec.muxerOptions = {{"movflags", "frag_keyframe+empty_moov+default_base_moof"}};
    MAKE_SOURCE(spec);
    EXPECT_NEAR(copiedWhole(mp4).durationSeconds.value(), 2, 0.05);
}

TEST_F(PassthroughTracksTest, WithOffsetsBelowZeroAreShownWhenTheyWere) {
    auto video = videoOf("libx264");
    video.bFrames = 2;
    video.seconds = 0.2;
    MAKE_SOURCE(mediaOf("mov", {video}));
    boxlift::test::writeFile(source(),
                             test::withNegativeOffsets(boxlift::test::readFile(source())));
    const ProbedFile before = probe(source());
    for (const FileType type : {mp4, mov}) {
        const ProbedFile copy = copiedWhole(type);
        ASSERT_EQ(copy.video().packets.size(), before.video().packets.size());
        for (std::size_t i = 0; i < copy.video().packets.size(); ++i) {
            const auto& packet = copy.video().packets[i];
            EXPECT_LE(packet.dts.value(), packet.pts.value()) << i;
            EXPECT_NEAR(copy.video().seconds(packet.pts.value()),
                        before.video().seconds(before.video().packets[i].pts.value()), 0.001)
                << i;
        }
    }
}

TEST_F(PassthroughTracksTest, AreTurnedAsTheyWere) {
    for (const int rotation : {90, 180, 270}) {
        auto video = videoOf("mpeg4");
        video.rotation = rotation;
        video.mirrored = rotation == 180;
        MAKE_SOURCE(mediaOf("mov", {video}));
        const auto before = probe(source()).video().displayMatrix;
        ASSERT_TRUE(before);
        for (const FileType type : {mp4, mov})
            EXPECT_EQ(copiedWhole(type).video().displayMatrix, before);
    }
}

TEST_F(PassthroughTracksTest, KeepAspectAndColour) {
    auto video = videoOf("libx264");
    video.sampleAspect = {4, 3};
    video.colour = {"bt2020", "smpte2084", "bt2020nc", "tv"};
    MAKE_SOURCE(mediaOf("mov", {video}));
    for (const FileType type : {mp4, mov}) {
        const ProbedFile copy = copiedWhole(type);
        EXPECT_EQ(copy.video().sampleAspect, (boxlift::test::Ratio{4, 3}));
        EXPECT_EQ(copy.video().colour.primaries, "bt2020");
        EXPECT_EQ(copy.video().colour.transfer, "smpte2084");
        EXPECT_EQ(copy.video().colour.matrix, "bt2020nc");
    }
}

TEST_F(PassthroughTracksTest, KeepLanguagesAndWhichIsTheDefault) {
    auto video = videoOf("mpeg4");
    video.isDefault = true;
    auto first = audioOf("aac");
    first.language = "eng";
    auto second = first;
    second.language = "fra";
    second.isDefault = true;
    MAKE_SOURCE(mediaOf("mov", {video}, {first, second}));
    ASSERT_FALSE(probe(source()).audio(0).isDefault);
    for (const FileType type : {mp4, mov, m4a}) {
        const ProbedFile copy = copied(type);
        EXPECT_EQ(copy.audio(0).language, "eng");
        EXPECT_EQ(copy.audio(1).language, "fra");
        EXPECT_FALSE(copy.audio(0).isDefault);
        EXPECT_TRUE(copy.audio(1).isDefault);
    }
}

TEST_F(PassthroughTracksTest, OfSoundGoAloneIntoSoundFiles) {
    auto spec = mediaOf("mp4", {videoOf("mpeg4")}, {audioOf("aac"), audioOf("aac")});
    spec.subtitles = {{.events = {{0, 1, "words"}}}};
    MAKE_SOURCE(spec);
    const ProbedFile before = probe(source());
    const ProbedFile copy = copied(m4a);
    EXPECT_EQ(copy.streams.size(), 2U);
    ASSERT_EQ(copy.all(StreamKind::audio).size(), 2U);
    EXPECT_EQ(copy.audio(0).payloadHashes(), before.audio(0).payloadHashes());
    EXPECT_EQ(copy.audio(1).payloadHashes(), before.audio(1).payloadHashes());
}

TEST_F(PassthroughTracksTest, OfTextGoAlong) {
    auto spec = mediaOf("mp4", {videoOf("mpeg4")});
    spec.subtitles = {{.events = {{0.2, 0.8, "words"}}, .language = "fra"}};
    MAKE_SOURCE(spec);
    for (const FileType type : {mp4, mov}) {
        const auto text = copied(type).all(StreamKind::subtitle);
        ASSERT_EQ(text.size(), 1U);
        EXPECT_EQ(openFile(output())->loadTracks(MediaType::text).size(), 1U);
    }
    EXPECT_EQ(probe(output()).all(StreamKind::subtitle).at(0)->codec, "mov_text");
    EXPECT_EQ(probe(output()).all(StreamKind::subtitle).at(0)->language, "fra");
}

TEST_F(PassthroughTracksTest, OfHevcAreCalledByTheirHeader) {
    auto video = videoOf("libx265");
    video.codecTag = "hev1";
    video.encoderOptions = {{"x265-params", "log-level=none"}};
    MAKE_SOURCE(mediaOf("mp4", {video}));
    ASSERT_EQ(probe(source()).video().codecTag, "hev1");
    for (const FileType type : {mp4, mov})
        EXPECT_EQ(copiedWhole(type).video().codecTag, "hvc1");
}

TEST_F(PassthroughTracksTest, KeepTheCodeThatTheyHad) {
    for (const char* tag : {"apco", "apcs", "apcn", "apch"}) {
        auto video = videoOf("prores_ks");
        video.seconds = 0.2;
        video.codecTag = tag;
        MAKE_SOURCE(mediaOf("mov", {video}));
        EXPECT_EQ(copiedWhole(mov).video().codecTag, tag);
    }
}

TEST_F(PassthroughTracksTest, OfACompositionAreTurnedAsItSays) {
    auto video = videoOf("mpeg4");
    video.rotation = 90;
    MAKE_SOURCE(mediaOf("mov", {video}, {audioOf("aac")}));
    const ProbedFile copy = copied(mp4, pictureOnly({-1, 0, 0, -1, 160, 120}));
    EXPECT_EQ(copy.video().displayMatrix, (boxlift::test::DisplayMatrix{-1, 0, 0, -1, 160, 120}));
    const auto upright = copied(mp4, pictureOnly()).video().displayMatrix;
    EXPECT_EQ(upright.value_or(boxlift::test::DisplayMatrix()), boxlift::test::DisplayMatrix());
}

TEST_F(PassthroughTracksTest, OfACompositionAreTheOnlyOnes) {
    auto spec = mediaOf("mov", {videoOf("mpeg4")}, {audioOf("aac")});
    spec.subtitles = {{.events = {{0, 1, "words"}}}};
    spec.metadata = {{"title", "A Title"}};
    spec.chapters = {{"one", 0, 0.5}, {"two", 0.5, 1}};
    MAKE_SOURCE(spec);
    const ProbedFile before = probe(source());
    for (const FileType type : {mp4, mov}) {
        const ProbedFile copy = copied(type, pictureOnly());
        EXPECT_EQ(copy.video().payloadHashes(), before.video().payloadHashes());
        EXPECT_TRUE(copy.all(StreamKind::audio).empty());
        EXPECT_TRUE(copy.all(StreamKind::subtitle).empty());
        EXPECT_EQ(copy.metadata.at("title"), "A Title");
        ASSERT_EQ(copy.chapters.size(), 2U);
        EXPECT_EQ(copy.chapters[1].title, "two");
    }
}

} // namespace boxlift::media
