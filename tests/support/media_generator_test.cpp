#include "support/media_generator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "support/media_boxes.h"
#include "support/media_decode.h"
#include "support/media_measure.h"
#include "support/media_probe.h"
#include "support/temp_folder.h"

namespace boxlift::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class MediaGenerator : public ::testing::Test {
protected:
    std::filesystem::path make(const MediaSpec& spec, const std::string& name = "clip") {
        std::filesystem::path path = m_folder.path() / name;
        makeMedia(path, spec);
        return path;
    }
    ProbedFile probed(const MediaSpec& spec) { return probe(make(spec)); }

    TempFolder m_folder;
};

MediaSpec picture(const VideoSpec& video) {
    return {.video = {video}};
}
MediaSpec sound(const AudioSpec& audio) {
    return {.audio = {audio}};
}

TEST_F(MediaGenerator, WritesPictureAndSoundOfTheAskedLength) {
    const ProbedFile file = probed({.seconds = 2, .video = {{}}, .audio = {{}}});
    EXPECT_EQ(file.format, "mov,mp4,m4a,3gp,3g2,mj2");
    EXPECT_NEAR(file.durationSeconds.value(), 2, 0.001);
    ASSERT_EQ(file.streams.size(), 2U);
    EXPECT_EQ(file.video().codec, "h264");
    EXPECT_EQ(file.video().codecTag, "avc1");
    EXPECT_EQ(file.video().width, 160);
    EXPECT_EQ(file.video().height, 120);
    EXPECT_EQ(file.video().packets.size(), 50U);
    EXPECT_EQ(file.audio().codec, "aac");
    EXPECT_EQ(file.audio().sampleRate, 44100);
    EXPECT_EQ(file.audio().channels, 2);
}

TEST_F(MediaGenerator, WritesTheSameBytesForTheSameWishes) {
    const MediaSpec spec = {.seconds = 0.4, .video = {{.bFrames = 2}}, .audio = {{}}};
    EXPECT_EQ(readFile(make(spec, "first")), readFile(make(spec, "second")));
}

TEST_F(MediaGenerator, ShowsADifferentNumberedPictureInEachFrame) {
    const auto frames = decodeVideo(make(picture({.bFrames = 2})));
    ASSERT_EQ(frames.size(), 25U);
    for (std::size_t index = 0; index < frames.size(); ++index) {
        EXPECT_EQ(frameNumber(frames[index]), static_cast<std::int64_t>(index));
        EXPECT_NEAR(frames[index].seconds, static_cast<double>(index) / 25, 1e-6);
    }
    EXPECT_LT(ssim(frames[0], frames[12]), 0.9);
}

TEST_F(MediaGenerator, KeepsTheDistanceOfKeyFrames) {
    const ProbedFile file = probed(picture({.keyFrameInterval = 5}));
    const auto& packets = file.video().packets;
    ASSERT_EQ(packets.size(), 25U);
    for (std::size_t index = 0; index < packets.size(); ++index) {
        EXPECT_EQ(packets[index].isKey, index % 5 == 0) << index;
    }
}

TEST_F(MediaGenerator, ReordersFramesOnlyWhenAskedForBFrames) {
    const auto isReordered = [](const ProbedFile& file) {
        const auto& packets = file.video().packets;
        return std::ranges::any_of(packets, [](const auto& p) { return p.pts != p.dts; });
    };
    EXPECT_FALSE(isReordered(probed(picture({}))));
    EXPECT_TRUE(isReordered(probed(picture({.bFrames = 2}))));
}

TEST_F(MediaGenerator, TurnsThePictureWithADisplayMatrix) {
    const auto matrixFor = [this](int rotation, bool mirrored) {
        return probed(picture({.rotation = rotation, .mirrored = mirrored})).video().displayMatrix;
    };
    EXPECT_EQ(matrixFor(0, false), std::nullopt);
    EXPECT_EQ(matrixFor(90, false), (DisplayMatrix{0, 1, -1, 0, 120, 0}));
    EXPECT_EQ(matrixFor(180, false), (DisplayMatrix{-1, 0, 0, -1, 160, 120}));
    EXPECT_EQ(matrixFor(270, false), (DisplayMatrix{0, -1, 1, 0, 0, 160}));
    EXPECT_EQ(matrixFor(0, true), (DisplayMatrix{-1, 0, 0, 1, 160, 0}));
    EXPECT_EQ(matrixFor(90, true), (DisplayMatrix{0, -1, -1, 0, 120, 160}));
}

TEST_F(MediaGenerator, WritesAnOddDisplayMatrixToTheLetter) {
    const DisplayMatrix odd = {0, 1, -1, 0, 7, -3.5};
    EXPECT_EQ(probed(picture({.displayMatrix = odd})).video().displayMatrix, odd);
}

TEST_F(MediaGenerator, WritesThePixelAspect) {
    const ProbedFile file = probed(picture({.width = 144, .sampleAspect = {4, 3}}));
    EXPECT_EQ(file.video().sampleAspect, (Ratio{4, 3}));
    EXPECT_EQ(file.video().width, 144);
}

TEST_F(MediaGenerator, TagsColours) {
    const ColourTags hdr = {"bt2020", "arib-std-b67", "bt2020nc", "tv"};
    EXPECT_EQ(probed(picture({.colour = hdr})).video().colour, hdr);
    EXPECT_EQ(probed(picture({})).video().colour, ColourTags{});
}

TEST_F(MediaGenerator, StoresTwoFieldsPerFrame) {
    const auto path = make(picture({.codec = "mpeg2video", .interlaced = true}));
    EXPECT_EQ(probe(path).video().fieldOrder, "tt");
    const auto interlaced = decodeVideo(path, {.maxFrames = 4});
    EXPECT_TRUE(interlaced.at(3).isInterlaced);
    const auto progressive = decodeVideo(make(picture({.codec = "mpeg2video"})), {.maxFrames = 4});
    EXPECT_FALSE(progressive.at(3).isInterlaced);
    EXPECT_LT(ssim(interlaced.at(3), progressive.at(3)), 0.97);
}

TEST_F(MediaGenerator, VariesTheFrameRate) {
    const ProbedFile file = probed(picture({.variableFrameRate = true}));
    const ProbedStream& video = file.video();
    ASSERT_EQ(video.packets.size(), 25U);
    const auto secondsAt = [&](std::size_t index) {
        return video.seconds(video.packets[index].pts.value());
    };
    EXPECT_NEAR(secondsAt(1) - secondsAt(0), 0.02, 1e-6);
    EXPECT_NEAR(secondsAt(2) - secondsAt(1), 0.06, 1e-6);
    EXPECT_NEAR(secondsAt(3) - secondsAt(2), 0.02, 1e-6);
}

TEST_F(MediaGenerator, StartsATrackLate) {
    const ProbedFile file =
        probed({.video = {{}}, .audio = {{.codec = "pcm_s16le", .startSeconds = 0.5}}});
    EXPECT_NEAR(file.video().startSeconds.value(), 0, 1e-6);
    EXPECT_NEAR(file.audio().startSeconds.value(), 0.5, 1e-6);
    EXPECT_NEAR(file.durationSeconds.value(), 1.5, 0.001);
}

TEST_F(MediaGenerator, PutsALateTracksSoundWhereItBelongs) {
    const auto path = make({.video = {{}},
                            .audio = {{.signal = Signal::impulses,
                                       .amplitude = 0.9,
                                       .impulses = {22050},
                                       .startSeconds = 0.5}}});
    const DecodedAudio audio = decodeAudio(path);
    const double heard =
        audio.startSeconds + static_cast<double>(peakSample(audio)) / audio.sampleRate;
    EXPECT_NEAR(heard, 1.0, 0.001);
}

TEST_F(MediaGenerator, GivesEachTrackItsOwnLength) {
    const ProbedFile file = probed({.seconds = 1, .video = {{}}, .audio = {{.seconds = 0.5}}});
    EXPECT_NEAR(file.video().durationSeconds.value(), 1, 0.001);
    EXPECT_NEAR(file.audio().durationSeconds.value(), 0.5, 0.001);
}

TEST_F(MediaGenerator, LeavesAGapInTheSound) {
    const auto path = make(sound({.codec = "alac", .gap = Gap{0.5, 0.25}}));
    const DecodedAudio audio = decodeAudio(path);
    EXPECT_NEAR(audio.seconds(), 1.25, 0.001);
    // The gap begins with the first piece of 4,096 samples from 0.5 s on: the seventh.
    const std::size_t start = 24576;
    EXPECT_GT(rms(audio, {.begin = start - 1000, .end = start}), 0.3);
    EXPECT_EQ(rms(audio, {.begin = start + 2, .end = start + 11000}), 0);
    EXPECT_GT(rms(audio, {.begin = start + 11030, .end = start + 12030}), 0.3);
}

TEST_F(MediaGenerator, PlaysAToneOfItsOwnInEachChannel) {
    const auto path = make(sound(
        {.codec = "pcm_s16le", .layout = "5.1", .frequencies = {200, 300, 400, 50, 500, 600}}));
    const DecodedAudio audio = decodeAudio(path);
    ASSERT_EQ(audio.layout, "5.1");
    EXPECT_NEAR(toneLevel(audio, 200, {.channel = 0}), 0.5, 0.001);
    EXPECT_NEAR(toneLevel(audio, 50, {.channel = 3}), 0.5, 0.001);
    EXPECT_NEAR(toneLevel(audio, 600, {.channel = 5}), 0.5, 0.001);
    EXPECT_NEAR(toneLevel(audio, 600, {.channel = 0}), 0, 0.001);
}

TEST_F(MediaGenerator, MakesNoiseThatDiffersByChannel) {
    const DecodedAudio audio =
        decodeAudio(make(sound({.codec = "pcm_f32le", .signal = Signal::noise, .amplitude = 0.6})));
    // The effective value of an even spread over -a to a is a divided by the root of three.
    EXPECT_NEAR(rms(audio, {.channel = 0}), 0.6 / std::sqrt(3.0), 0.01);
    double product = 0;
    for (std::size_t sample = 0; sample < audio.length(); ++sample) {
        product += audio.at(sample, 0) * audio.at(sample, 1);
    }
    EXPECT_NEAR(product / static_cast<double>(audio.length()), 0, 0.005);
}

TEST_F(MediaGenerator, KeepsLanguagesAndTheDefaultTrack) {
    const ProbedFile file =
        probed({.format = "mp4",
                .audio = {{.language = "deu"},
                          {.frequencies = {1000}, .language = "fra", .isDefault = true}}});
    EXPECT_EQ(file.audio(0).language, "deu");
    EXPECT_EQ(file.audio(1).language, "fra");
    EXPECT_FALSE(file.audio(0).isDefault);
    EXPECT_TRUE(file.audio(1).isDefault);
}

TEST_F(MediaGenerator, KeepsOnlyLanguagesOfTheOldListInMov) {
    const ProbedFile file = probed({.audio = {{.language = "ger"}, {.language = "deu"}}});
    EXPECT_EQ(file.audio(0).language, "ger");
    EXPECT_EQ(file.audio(1).language, "");
}

TEST_F(MediaGenerator, WritesMetadata) {
    const ProbedFile file =
        probed({.format = "mp4", .audio = {{}}, .metadata = {{"title", "Hügel"}, {"artist", "Ä"}}});
    EXPECT_EQ(file.metadata.at("title"), "Hügel");
    EXPECT_EQ(file.metadata.at("artist"), "Ä");
}

TEST_F(MediaGenerator, WritesChapters) {
    const ProbedFile file =
        probed({.video = {{}}, .chapters = {{"One", 0, 0.25}, {"Two", 0.25, 1}}});
    ASSERT_EQ(file.chapters.size(), 2U);
    EXPECT_EQ(file.chapters[0].title, "One");
    EXPECT_EQ(file.chapters[1].title, "Two");
    EXPECT_NEAR(file.chapters[1].start, 0.25, 0.001);
    EXPECT_NEAR(file.chapters[1].end, 1, 0.001);
}

TEST_F(MediaGenerator, AttachesACover) {
    for (const std::string codec : {"png", "mjpeg"}) {
        const ProbedFile file =
            probed({.format = "ipod", .audio = {{}}, .cover = CoverSpec{.codec = codec}});
        ASSERT_EQ(file.streams.size(), 2U);
        EXPECT_TRUE(file.streams[1].isAttachedPicture);
        EXPECT_EQ(file.streams[1].codec, codec);
        EXPECT_EQ(file.streams[1].width, 32);
        EXPECT_THAT(file.all(StreamKind::video), IsEmpty());
    }
}

TEST_F(MediaGenerator, WritesSubtitles) {
    const ProbedFile file =
        probed({.format = "mp4",
                .video = {{}},
                .subtitles = {{.events = {{0.2, 0.6, "Good morning"}}, .language = "eng"}}});
    const auto subtitles = file.all(StreamKind::subtitle);
    ASSERT_EQ(subtitles.size(), 1U);
    EXPECT_EQ(subtitles[0]->codec, "mov_text");
    EXPECT_EQ(subtitles[0]->codecTag, "tx3g");
    EXPECT_EQ(subtitles[0]->language, "eng");
    const auto hasText = [](const ProbedPacket& packet) {
        return packet.size == std::string("Good morning").size() + 2;
    };
    const auto found = std::ranges::find_if(subtitles[0]->packets, hasText);
    ASSERT_NE(found, subtitles[0]->packets.end());
    EXPECT_NEAR(subtitles[0]->seconds(found->pts.value()), 0.2, 0.001);
    EXPECT_NEAR(subtitles[0]->seconds(found->duration), 0.4, 0.001);
}

TEST_F(MediaGenerator, AddsATimecodeTrack) {
    const ProbedFile file = probed({.video = {{}}, .timecode = "01:02:03:04"});
    const auto others = file.all(StreamKind::data);
    ASSERT_EQ(others.size(), 1U);
    EXPECT_EQ(others[0]->codecTag, "tmcd");
    EXPECT_EQ(others[0]->metadata.at("timecode"), "01:02:03:04");
}

TEST_F(MediaGenerator, TakesTheCodecTagAsAsked) {
    try {
        const ProbedFile file = probed(picture({.codec = "libx265", .codecTag = "hvc1"}));
        EXPECT_EQ(file.video().codec, "hevc");
        EXPECT_EQ(file.video().codecTag, "hvc1");
        EXPECT_EQ(probed(picture({.codec = "libx265"})).video().codecTag, "hev1");
    } catch (const MissingEncoder& error) {
        GTEST_SKIP() << error.what();
    }
}

TEST_F(MediaGenerator, HandsOptionsToTheContainer) {
    const MediaSpec plain = {.video = {{}}};
    EXPECT_THAT(topLevelBoxTypes(make(plain)), ElementsAre("ftyp", "wide", "mdat", "moov"));
    MediaSpec inFront = plain;
    inFront.muxerOptions = {{"movflags", "faststart"}};
    EXPECT_THAT(topLevelBoxTypes(make(inFront)), ElementsAre("ftyp", "moov", "wide", "mdat"));
    MediaSpec fragmented = plain;
    fragmented.muxerOptions = {{"movflags", "frag_keyframe+empty_moov"}};
    EXPECT_THAT(topLevelBoxTypes(make(fragmented)), Contains("moof").Times(3));
}

TEST_F(MediaGenerator, HandsOptionsToTheEncoder) {
    EXPECT_EQ(probed(picture({.encoderOptions = {{"profile", "baseline"}}})).video().profile,
              "Constrained Baseline");
    EXPECT_EQ(probed(picture({})).video().profile, "High");
}

TEST_F(MediaGenerator, MakesHalfOfThePictureTransparent) {
    const auto path =
        make(picture({.codec = "rawvideo", .pixelFormat = "argb", .leftHalfTransparent = true}));
    const auto boxes = topLevelBoxes(path);
    const auto isData = [](const Box& box) { return box.type == "mdat"; };
    const auto data = std::ranges::find_if(boxes, isData);
    ASSERT_NE(data, boxes.end());
    const std::string bytes = readFile(path).substr(data->offset + 8);
    const auto alphaAt = [&](std::size_t x, std::size_t y) { return bytes.at(4 * (160 * y + x)); };
    EXPECT_EQ(alphaAt(0, 0), '\0');
    EXPECT_EQ(alphaAt(79, 119), '\0');
    EXPECT_EQ(alphaAt(80, 0), '\xff');
    EXPECT_EQ(alphaAt(159, 119), '\xff');
}

TEST_F(MediaGenerator, SaysWhichEncoderIsMissing) {
    EXPECT_THROW(make(picture({.codec = "no_such_encoder"})), MissingEncoder);
}

TEST_F(MediaGenerator, RefusesWishesThatNobodyUnderstands) {
    EXPECT_THROW(make(picture({.encoderOptions = {{"no_such_option", "1"}}})),
                 std::invalid_argument);
    EXPECT_THROW(make({.audio = {{}}, .muxerOptions = {{"no_such_option", "1"}}}),
                 std::invalid_argument);
    EXPECT_THROW(make(picture({.rotation = 45})), std::invalid_argument);
    EXPECT_THROW(make(picture({.codecTag = "toolong"})), std::invalid_argument);
    EXPECT_THROW(make({.format = "no_such_container", .audio = {{}}}), std::invalid_argument);
}

TEST_F(MediaGenerator, FailsWhereTheFolderIsMissing) {
    EXPECT_THROW(makeMedia(m_folder.path() / "missing" / "clip.mov", {.audio = {{}}}),
                 std::runtime_error);
}

} // namespace
} // namespace boxlift::test
