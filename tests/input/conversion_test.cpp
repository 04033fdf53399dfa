#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "input/conversion_runner.h"
#include "input/source_comparison.h"
#include "input/sources.h"
#include "support/media_boxes.h"
#include "support/media_decode.h"
#include "support/media_generator.h"
#include "support/media_measure.h"
#include "support/media_probe.h"
#include "support/temp_folder.h"

namespace boxlift::test {

namespace fs = std::filesystem;

namespace {

/// Makes a source, converts it and opens the output again.
class EndToEnd : public testing::Test {
protected:
    /// False, and the case is skipped, when an encoder is missing.
    bool make(const char* name, const MediaSpec& spec) {
        try {
            m_request.source = makeSource(m_folder.path(), name, spec);
        } catch (const MissingEncoder& error) {
            m_missing = error.what();
            return false;
        }
        m_request.info = Converter::analyze(m_request.source);
        m_request.output = makeOutputFolder(m_folder.path()) / "out";
        return true;
    }

    ProbedFile convertTo(Target target, Mode expected) {
        m_request.target = target;
        const Conversion done = convert(m_request);
        if (done.mode != expected)
            throw std::runtime_error("the mode is another one; " + done.sentence);
        const Plan plan =
            Converter::plan(m_request.info, target, m_request.size, m_request.removeAudio);
        for (const Difference& difference :
             checkProgress(done.progress, plan.mode == expected ? 1 : 2))
            ADD_FAILURE() << difference.text;
        EXPECT_EQ(namesIn(m_request.output.parent_path()), std::vector<std::string>{"out"});
        return probe(m_request.output);
    }

    void expectLikeSource(Mode mode) const {
        for (const Difference& difference : compareWithSource(m_request, mode))
            ADD_FAILURE() << difference.what << ": " << difference.text;
    }

    TempFolder m_folder;
    ConversionRequest m_request;
    std::string m_missing;
};

} // namespace

TEST_F(EndToEnd, SoundIsTakenOutWhileAllElseStays) {
    MediaSpec spec = h264AndAac();
    spec.video[0].rotation = 90;
    spec.metadata = {{"title", "A title"}};
    spec.chapters = {{"One", 0, 0.5}, {"Two", 0.5, 1}};
    ASSERT_TRUE(make("source.mov", spec)) << m_missing;
    m_request.removeAudio = true;
    const ProbedFile output = convertTo(Target::mp4, Mode::boxlift);
    EXPECT_TRUE(output.all(StreamKind::audio).empty());
    EXPECT_EQ(output.metadata.at("title"), "A title");
    ASSERT_EQ(output.chapters.size(), 2U);
    EXPECT_EQ(output.chapters[1].title, "Two");
    expectLikeSource(Mode::boxlift);
    ASSERT_TRUE(output.video().displayMatrix);
    EXPECT_EQ(output.video().displayMatrix->b, 1);
}

TEST_F(EndToEnd, SoundIsTakenOutOfAnEncodingToo) {
    MediaSpec spec = h264AndAac();
    spec.video[0].width = 1600;
    spec.video[0].height = 900;
    ASSERT_TRUE(make("source.mov", spec)) << m_missing;
    m_request.removeAudio = true;
    m_request.size = SizeOption::p720;
    const ProbedFile output = convertTo(Target::mp4, Mode::reencode);
    EXPECT_TRUE(output.all(StreamKind::audio).empty());
    EXPECT_EQ(output.video().width, 1280);
    EXPECT_EQ(output.video().height, 720);
    expectLikeSource(Mode::reencode);
}

TEST_F(EndToEnd, RemovingTheSoundOfASilentFileChangesNothing) {
    ASSERT_TRUE(make("source.mov", {.format = "mov", .video = {{}}})) << m_missing;
    m_request.removeAudio = true;
    convertTo(Target::mov, Mode::boxlift);
    expectLikeSource(Mode::boxlift);
}

TEST_F(EndToEnd, SoundIsLiftedOutOfAFilmWithoutLoss) {
    MediaSpec spec = h264AndAac();
    spec.metadata = {{"title", "A title"}};
    ASSERT_TRUE(make("source.mov", spec)) << m_missing;
    const ProbedFile output = convertTo(Target::m4a, Mode::boxlift);
    EXPECT_TRUE(output.all(StreamKind::video).empty());
    EXPECT_EQ(output.metadata.at("title"), "A title");
    expectLikeSource(Mode::boxlift);
}

TEST_F(EndToEnd, AnAudioTargetIgnoresThatSoundIsToBeRemoved) {
    ASSERT_TRUE(make("source.mov", h264AndAac())) << m_missing;
    m_request.removeAudio = true;
    EXPECT_EQ(convertTo(Target::m4a, Mode::boxlift).all(StreamKind::audio).size(), 1U);
}

TEST_F(EndToEnd, AppleLosslessIsCopied) {
    ASSERT_TRUE(make("source.m4a", {.format = "ipod", .audio = {{.codec = "alac"}}})) << m_missing;
    EXPECT_EQ(convertTo(Target::m4a, Mode::boxlift).audio().codec, "alac");
    expectLikeSource(Mode::boxlift);
}

TEST_F(EndToEnd, SeveralTracksAreMixedIntoOne) {
    ASSERT_TRUE(make("source.mov", {.format = "mov",
                                    .audio = {{.frequencies = {500}, .amplitude = 0.3},
                                              {.frequencies = {2000}, .amplitude = 0.3}}}))
        << m_missing;
    const ProbedFile output = convertTo(Target::aac, Mode::reencode);
    EXPECT_EQ(output.all(StreamKind::audio).size(), 1U);
    const DecodedAudio sound = decodeAudio(m_request.output);
    EXPECT_EQ(sound.channels, 2);
    EXPECT_EQ(sound.sampleRate, 44100);
    for (const double frequency : {500.0, 2000.0})
        EXPECT_NEAR(toneLevel(sound, frequency, {.begin = 8820, .end = 35280}), 0.3, 0.02);
    EXPECT_NEAR(sound.seconds(), 1, 0.001);
}

TEST_F(EndToEnd, TheRateOfAudioTargetsIsTheTargets) {
    const MediaSpec spec{
        .format = "wav", .seconds = 10, .audio = {{.codec = "pcm_s16le", .signal = Signal::noise}}};
    ASSERT_TRUE(make("source.wav", spec)) << m_missing;
    const auto rate = [&](Target target) {
        convertTo(target, Mode::reencode);
        const auto bits = 8.0 * static_cast<double>(fs::file_size(m_request.output));
        return bits / 10;
    };
    EXPECT_NEAR(rate(Target::aac), 128'000, 10'000);
    EXPECT_NEAR(rate(Target::m4a), 256'000, 20'000);
}

TEST_F(EndToEnd, Mp3BecomesAac) {
    const MediaSpec spec{.format = "mp3", .seconds = 2, .audio = {{.codec = "libmp3lame"}}};
    if (!make("source.mp3", spec))
        GTEST_SKIP() << m_missing;
    EXPECT_EQ(m_request.info.audioCodec, fourCharCode(".mp3"));
    const ProbedFile output = convertTo(Target::m4a, Mode::reencode);
    EXPECT_EQ(output.audio().codec, "aac");
    const DecodedAudio sound = decodeAudio(m_request.output);
    EXPECT_NEAR(toneFrequency(sound, {.begin = 22050, .end = 66150}), 440, 2);
    EXPECT_NEAR(sound.seconds(), 2, 0.06);
}

TEST_F(EndToEnd, FlacBecomesAacOfTheSameLength) {
    ASSERT_TRUE(make("source.flac", {.format = "flac", .audio = {{.codec = "flac"}}})) << m_missing;
    EXPECT_EQ(convertTo(Target::m4a, Mode::reencode).audio().codec, "aac");
    EXPECT_NEAR(decodeAudio(m_request.output).seconds(), 1, 0.001);
}

TEST_F(EndToEnd, HevcIsCopiedToMovUnderTheNameThatPlayersKnow) {
    MediaSpec spec{.format = "mp4",
                   .video = {{.codec = "libx265",
                              .codecTag = "hev1",
                              .encoderOptions = {{"x265-params", "log-level=none"}}}}};
    if (!make("source.mp4", spec))
        GTEST_SKIP() << m_missing;
    ASSERT_EQ(probe(m_request.source).video().codecTag, "hev1");
    EXPECT_EQ(convertTo(Target::mov, Mode::boxlift).video().codecTag, "hvc1");
    expectLikeSource(Mode::boxlift);
}

TEST_F(EndToEnd, HevcIsEncodedAgainForMp4) {
    MediaSpec spec{.format = "mov",
                   .video = {{.codec = "libx265",
                              .codecTag = "hvc1",
                              .encoderOptions = {{"x265-params", "log-level=none"}}}},
                   .audio = {{}}};
    if (!make("source.mov", spec))
        GTEST_SKIP() << m_missing;
    EXPECT_EQ(convertTo(Target::mp4, Mode::reencode).video().codec, "h264");
    expectLikeSource(Mode::reencode);
}

TEST_F(EndToEnd, ProResKeepsItsVariant) {
    MediaSpec spec{.format = "mov",
                   .video = {{.codec = "prores_ks",
                              .codecTag = "apcn",
                              .encoderOptions = {{"profile", "standard"}}}}};
    if (!make("source.mov", spec))
        GTEST_SKIP() << m_missing;
    ASSERT_EQ(m_request.info.videoCodec, fourCharCode("apcn"));
    EXPECT_EQ(convertTo(Target::mov, Mode::boxlift).video().codecTag, "apcn");
    expectLikeSource(Mode::boxlift);
}

TEST_F(EndToEnd, PlainSoundIsCopiedToMovBitByBit) {
    for (const char* codec : {"pcm_s16le", "pcm_s24le", "pcm_f32le", "pcm_s16be"}) {
        SCOPED_TRACE(codec);
        ASSERT_TRUE(
            make("source.mov", {.format = "mov", .video = {{}}, .audio = {{.codec = codec}}}))
            << m_missing;
        EXPECT_EQ(convertTo(Target::mov, Mode::boxlift).audio().codec, codec);
        expectLikeSource(Mode::boxlift);
    }
}

TEST_F(EndToEnd, PlainSoundIsEncodedForMp4) {
    ASSERT_TRUE(
        make("source.mov", {.format = "mov", .video = {{}}, .audio = {{.codec = "pcm_s16le"}}}))
        << m_missing;
    EXPECT_EQ(convertTo(Target::mp4, Mode::reencode).audio().codec, "aac");
    expectLikeSource(Mode::reencode);
}

TEST_F(EndToEnd, ABroadcastStreamIsLiftedIntoMp4FromItsFirstKeyFrame) {
    MediaSpec spec = h264AndAac(2);
    spec.format = "mpegts";
    spec.video[0].startSeconds = 10;
    spec.audio[0].startSeconds = 10;
    ASSERT_TRUE(make("source.ts", spec)) << m_missing;
    ASSERT_GT(probe(m_request.source).startSeconds.value_or(0), 5);
    const ProbedFile output = convertTo(Target::mp4, Mode::boxlift);
    EXPECT_NEAR(output.startSeconds.value_or(-1), 0, 0.05);
    expectLikeSource(Mode::boxlift);
}

TEST_F(EndToEnd, EverySizeFitsItsBoxAndNoneEnlarges) {
    MediaSpec spec = h264AndAac(0.2);
    spec.video[0].width = 1080;
    spec.video[0].height = 1920;
    ASSERT_TRUE(make("portrait.mov", spec)) << m_missing;
    m_request.size = SizeOption::p720;
    const ProbedFile smaller = convertTo(Target::mov, Mode::reencode);
    EXPECT_EQ(smaller.video().width, 720);
    EXPECT_EQ(smaller.video().height, 1280);
    m_request.size = SizeOption::p1080;
    const ProbedFile same = convertTo(Target::mp4, Mode::reencode);
    EXPECT_EQ(same.video().width, 1080);
    EXPECT_EQ(same.video().height, 1920);
    expectLikeSource(Mode::reencode);
}

/// Sets the length, in the movie's ticks, of the only edit of a file's first track that has one.
void cutEdit(const fs::path& path, std::uint32_t ticks) {
    std::string contents = readFile(path);
    // A full box: version and flags, the number of entries, then the first one's length.
    const auto edit = contents.find("elst") + 12;
    ASSERT_LT(edit, contents.size());
    ASSERT_EQ(contents[edit - 1], 1);
    for (int i = 0; i < 4; ++i)
        contents[edit + static_cast<std::size_t>(i)] = static_cast<char>(ticks >> (24 - 8 * i));
    writeFile(path, contents);
}

TEST_F(EndToEnd, WhatAnEditHidesStaysHidden) {
    ASSERT_TRUE(make("source.mov", {.format = "mov",
                                    .seconds = 3,
                                    .video = {{}},
                                    .muxerOptions = {{"movie_timescale", "1000"}}}))
        << m_missing;
    ASSERT_NEAR(m_request.info.duration, 3, 0.01);
    cutEdit(m_request.source, 1000);
    m_request.info = Converter::analyze(m_request.source);
    EXPECT_NEAR(m_request.info.duration, 1, 0.01);
    convertTo(Target::mov, Mode::boxlift);
    expectLikeSource(Mode::boxlift);
    EXPECT_EQ(decodeVideo(m_request.output).size(), 25U);
    convertTo(Target::mp4, Mode::boxlift);
    expectLikeSource(Mode::boxlift);
    m_request.size = SizeOption::p720;
    convertTo(Target::mp4, Mode::reencode);
    expectLikeSource(Mode::reencode);
    EXPECT_EQ(decodeVideo(m_request.output).size(), 25U);
}

// The demuxer takes the gap before a late track off the length of its last packet.
TEST_F(EndToEnd, ALateTrackKeepsAllOfItsLastPacket) {
    const MediaSpec spec{
        .format = "ipod",
        .audio = {{.codec = "alac", .startSeconds = 0.05, .seconds = 40960.0 / 44100}}};
    ASSERT_TRUE(make("late.m4a", spec)) << m_missing;
    const double end = 0.05 + 40960.0 / 44100;
    ASSERT_NEAR(m_request.info.duration, end, 0.005);
    convertTo(Target::m4a, Mode::boxlift);
    EXPECT_NEAR(movieSeconds(m_request.output).value_or(0), end, 0.005);
    expectLikeSource(Mode::boxlift);
}

// The plan looks at codecs alone: that QuickTime files cannot hold AV1 shows only when it is tried.
TEST_F(EndToEnd, ACopyThatTurnsOutImpossibleBecomesAnEncoding) {
    MediaSpec spec{.format = "mp4",
                   .seconds = 0.4,
                   .video = {{.codec = "libaom-av1", .encoderOptions = {{"cpu-used", "8"}}}}};
    if (!make("source.mp4", spec))
        GTEST_SKIP() << m_missing;
    ASSERT_EQ(Converter::plan(m_request.info, Target::mov, SizeOption::original, false).mode,
              Mode::boxlift);
    EXPECT_EQ(convertTo(Target::mov, Mode::reencode).video().codec, "h264");
    expectLikeSource(Mode::reencode);
}

// A second sound track in a format that MP4 does not take; the plan knows of the first alone.
TEST_F(EndToEnd, ASecondTrackThatDoesNotFitBringsAnEncoding) {
    MediaSpec spec = h264AndAac();
    spec.audio.push_back({.codec = "pcm_s16le"});
    ASSERT_TRUE(make("source.mov", spec)) << m_missing;
    ASSERT_EQ(Converter::plan(m_request.info, Target::mp4, SizeOption::original, false).mode,
              Mode::boxlift);
    EXPECT_EQ(convertTo(Target::mp4, Mode::reencode).all(StreamKind::audio).size(), 2U);
    expectLikeSource(Mode::reencode);
}

TEST_F(EndToEnd, ATrackThatM4aCannotHoldBringsATranscodeOfAll) {
    MediaSpec spec{.format = "mov",
                   .audio = {{.frequencies = {500}, .amplitude = 0.3},
                             {.codec = "pcm_s16le", .frequencies = {2000}, .amplitude = 0.3}}};
    ASSERT_TRUE(make("source.mov", spec)) << m_missing;
    EXPECT_EQ(convertTo(Target::m4a, Mode::reencode).all(StreamKind::audio).size(), 1U);
    const DecodedAudio sound = decodeAudio(m_request.output);
    EXPECT_NEAR(toneLevel(sound, 2000, {.begin = 8820, .end = 35280}), 0.3, 0.02);
}

TEST_F(EndToEnd, ThePlanAndTheOutcomeAgreeOnCommonSources) {
    ASSERT_TRUE(make("source.mov", h264AndAac(0.4))) << m_missing;
    for (const Target target : allTargets)
        for (const SizeOption size : allSizeOptions)
            for (const bool removeAudio : {false, true}) {
                m_request.size = size;
                m_request.removeAudio = removeAudio && !isAudio(target);
                const Plan plan =
                    Converter::plan(m_request.info, target, size, m_request.removeAudio);
                convertTo(target, plan.mode);
                expectLikeSource(plan.mode);
            }
}

} // namespace boxlift::test
