#include <array>
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "input/conversion_runner.h"
#include "input/source_comparison.h"
#include "input/sources.h"
#include "support/media_decode.h"
#include "support/media_generator.h"
#include "support/media_measure.h"
#include "support/media_probe.h"
#include "support/temp_folder.h"

namespace boxlift::test {

namespace {

/// Makes a source, converts it in every way and looks for what it had.
class Kept : public testing::Test {
protected:
    void make(const MediaSpec& spec) {
        m_request.source = makeSource(m_folder.path(), "source", spec);
        m_request.info = Converter::analyze(m_request.source);
        m_request.output = makeOutputFolder(m_folder.path()) / "out";
    }
    ProbedFile convertTo(Target target, Mode expected, SizeOption size = SizeOption::original) {
        m_request.target = target;
        m_request.size = size;
        const Conversion done = convert(m_request);
        EXPECT_EQ(done.mode, expected) << done.sentence;
        return probe(m_request.output);
    }

    TempFolder m_folder;
    ConversionRequest m_request;
};

const ProbedStream* coverOf(const ProbedFile& file) {
    for (const ProbedStream& stream : file.streams)
        if (stream.isAttachedPicture)
            return &stream;
    return nullptr;
}

const std::map<std::string, std::string> tags{
    {"title", "A Title"},
    {"artist", "Somebody"},
    {"album_artist", "Some Band"},
    {"composer", "A Writer"},
    {"album", "An Album"},
    {"genre", "Noise"},
    {"date", "2021"},
    {"comment", "words"},
    {"copyright", "nobody"},
    {"track", "3/12"},
    {"disc", "1/2"},
    {"creation_time", "2021-02-03T04:05:06.000000Z"},
};

MediaSpec tagged(const char* videoCodec, const char* audioCodec) {
    MediaSpec spec{.format = "mp4",
                   .video = {{.codec = videoCodec}},
                   .audio = {{.codec = audioCodec}},
                   .metadata = tags,
                   .chapters = {{"One", 0, 0.5}, {"Two", 0.5, 1}}};
    spec.cover = {.codec = "mjpeg"};
    return spec;
}

void expectTagged(const ProbedFile& file, const ProbedFile& source) {
    for (const auto& [key, value] : tags)
        EXPECT_EQ(file.metadata.count(key) ? file.metadata.at(key) : "none", value) << key;
    ASSERT_EQ(file.chapters.size(), 2U);
    EXPECT_EQ(file.chapters[1].title, "Two");
    ASSERT_NE(coverOf(file), nullptr);
    EXPECT_EQ(coverOf(file)->payloadHashes(), coverOf(source)->payloadHashes());
}

} // namespace

TEST_F(Kept, TagsChaptersAndCoverInEveryCopy) {
    make(tagged("libx264", "aac"));
    const ProbedFile source = probe(m_request.source);
    ASSERT_NO_FATAL_FAILURE(expectTagged(source, source));
    for (const Target target : {Target::mp4, Target::mov, Target::m4a})
        expectTagged(convertTo(target, Mode::boxlift), source);
}

TEST_F(Kept, TagsChaptersAndCoverInEveryEncoding) {
    make(tagged("libx264", "aac"));
    const ProbedFile source = probe(m_request.source);
    for (const Target target : {Target::mp4, Target::mov})
        for (const SizeOption size : {SizeOption::p1080, SizeOption::p720})
            expectTagged(convertTo(target, Mode::reencode, size), source);
    expectTagged(convertTo(Target::aac, Mode::reencode), source);
    make(tagged("libx264", "ac3"));
    expectTagged(convertTo(Target::m4a, Mode::reencode), source);
}

TEST_F(Kept, SoundThatIsLiftedOutOfAFilmWithItsCover) {
    for (const char* codec : {"aac", "alac"}) {
        make(tagged("libx264", codec));
        const ProbedFile source = probe(m_request.source);
        const ProbedFile output = convertTo(Target::m4a, Mode::boxlift);
        EXPECT_TRUE(output.all(StreamKind::video).empty());
        EXPECT_EQ(output.audio().codec, codec);
        EXPECT_EQ(output.audio().payloadHashes(), source.audio().payloadHashes());
        expectTagged(output, source);
    }
}

TEST_F(Kept, SoundThatIsLiftedOutOfAQuickTimeFilm) {
    for (const char* codec : {"aac", "alac"}) {
        MediaSpec spec{.format = "mov", .video = {{}}, .audio = {{.codec = codec}}};
        spec.metadata = {{"title", "A Title"}, {"artist", "Somebody"}};
        make(spec);
        const ProbedFile source = probe(m_request.source);
        const ProbedFile output = convertTo(Target::m4a, Mode::boxlift);
        EXPECT_EQ(output.streams.size(), 1U);
        EXPECT_EQ(output.audio().codec, codec);
        EXPECT_EQ(output.audio().payloadHashes(), source.audio().payloadHashes());
        EXPECT_EQ(output.metadata.at("title"), "A Title");
        EXPECT_EQ(output.metadata.at("artist"), "Somebody");
    }
}

TEST_F(Kept, EveryOrientationInCopiesAndEncodings) {
    for (const int rotation : {0, 90, 180, 270})
        for (const bool mirrored : {false, true}) {
            make({.format = "mov",
                  .seconds = 0.2,
                  .video = {{.rotation = rotation, .mirrored = mirrored}}});
            const auto matrix = probe(m_request.source).video().displayMatrix;
            ASSERT_EQ(matrix.has_value(), rotation != 0 || mirrored);
            for (const Target target : {Target::mp4, Target::mov}) {
                EXPECT_EQ(convertTo(target, Mode::boxlift).video().displayMatrix, matrix);
                EXPECT_EQ(convertTo(target, Mode::reencode, SizeOption::p720).video().displayMatrix,
                          matrix);
            }
        }
}

TEST_F(Kept, LanguagesAndWhichTrackIsTheDefaultInEncodings) {
    MediaSpec spec{.format = "mp4", .video = {{.isDefault = true}}};
    spec.audio = {{.codec = "ac3", .language = "deu"},
                  {.codec = "ac3", .language = "ces", .isDefault = true}};
    make(spec);
    for (const Target target : {Target::mp4, Target::mov}) {
        const ProbedFile output = convertTo(target, Mode::reencode, SizeOption::p720);
        EXPECT_EQ(output.audio(0).language, "deu");
        EXPECT_EQ(output.audio(1).language, "ces");
        EXPECT_FALSE(output.audio(0).isDefault);
        EXPECT_TRUE(output.audio(1).isDefault);
    }
}

struct SoundRow {
    const char* what;
    const char* format;
    AudioSpec spec;
    int rate;
    int channels;
};

// Tones keep their level within a tenth of a decibel, their pitch and, exactly, their length.
TEST_F(Kept, TonesOfEveryRateInEncodings) {
    constexpr double tenthOfADecibel = 0.0116;
    for (const SoundRow& row : {
             SoundRow{"8 kHz mono",
                      "wav",
                      {.codec = "pcm_s16le", .sampleRate = 8000, .layout = "mono"},
                      8000,
                      1},
             SoundRow{"44.1 kHz", "wav", {.codec = "pcm_s16le"}, 44100, 2},
             SoundRow{"192 kHz", "wav", {.codec = "pcm_s24le", .sampleRate = 192000}, 48000, 2},
         }) {
        SCOPED_TRACE(row.what);
        MediaSpec spec{.format = "mov", .seconds = 2, .video = {{}}, .audio = {row.spec}};
        spec.video[0].seconds = 2;
        make(spec);
        const ProbedFile output = convertTo(Target::mp4, Mode::reencode);
        const DecodedAudio sound = decodeAudio(m_request.output);
        EXPECT_EQ(sound.sampleRate, row.rate);
        EXPECT_EQ(sound.channels, row.channels);
        EXPECT_EQ(sound.length(), static_cast<std::size_t>(2 * row.rate));
        for (int channel = 0; channel < row.channels; ++channel) {
            // Whole periods, away from the ends.
            const auto second = static_cast<std::size_t>(row.rate);
            const SampleRange middle{channel, second / 2, second / 2 + second};
            EXPECT_NEAR(toneLevel(sound, 440, middle) / 0.5, 1, tenthOfADecibel);
            EXPECT_NEAR(toneFrequency(sound, middle), 440, 0.5);
        }
    }
}

TEST_F(Kept, SoundOfMoreChannelsThanAnEncodingHas) {
    MediaSpec spec{.format = "wav", .audio = {{.codec = "pcm_s16le", .layout = "24 channels"}}};
    spec.audio[0].amplitude = 0.03;
    make(spec);
    ASSERT_EQ(probe(m_request.source).audio().channels, 24);
    for (const Target target : {Target::m4a, Target::aac}) {
        convertTo(target, Mode::reencode);
        const DecodedAudio sound = decodeAudio(m_request.output);
        EXPECT_EQ(sound.channels, 2);
        EXPECT_EQ(sound.length(), 44100U);
        EXPECT_NEAR(toneFrequency(sound), 440, 0.5);
        EXPECT_GT(toneLevel(sound, 440), 0.01);
    }
}

TEST_F(Kept, TheExactLengthOfTranscodedSound) {
    for (const double seconds : {0.5, 1.0, 1.37})
        for (const Target target : {Target::m4a, Target::aac}) {
            make({.format = "wav", .seconds = seconds, .audio = {{.codec = "pcm_s16le"}}});
            const auto length = decodeAudio(m_request.source).length();
            convertTo(target, Mode::reencode);
            EXPECT_EQ(decodeAudio(m_request.output).length(), length);
        }
}

} // namespace boxlift::test
