#include <array>
#include <string>

#include <gtest/gtest.h>

#include "engine/media/box_writer.h"
#include "input/conversion_runner.h"
#include "input/sources.h"
#include "model/job_rules.h"
#include "support/media_generator.h"
#include "support/media_probe.h"
#include "support/temp_folder.h"

namespace boxlift::test {

namespace fs = std::filesystem;

namespace {

constexpr double wholeSeconds = 8;
constexpr std::string_view endsEarly = "The file is damaged: it ends before its stated length.";

/// A kind of file, and whether it says how long it is.
struct Row {
    const char* name;
    const char* format;
    const char* movieFlags;
    const char* audioCodec;
    bool hasPicture;
};

constexpr std::array stating{
    Row{"front.mp4", "mp4", "faststart", "aac", true},
    Row{"front.mov", "mov", "faststart", "pcm_s16le", true},
    Row{"front.m4a", "ipod", "faststart", "alac", false},
    Row{"fragments.mp4", "mp4", "frag_keyframe+empty_moov+default_base_moof", "aac", true},
    Row{"sound.wav", "wav", "", "pcm_s16le", false},
    Row{"sound.w64", "w64", "", "pcm_s16le", false},
    Row{"sound.aiff", "aiff", "", "pcm_s16be", false},
    Row{"sound.caf", "caf", "", "pcm_s16be", false},
    Row{"sound.au", "au", "", "pcm_s16be", false},
    Row{"sound.flac", "flac", "", "flac", false},
    Row{"sound.mp3", "mp3", "", "libmp3lame", false},
};

/// Streams that go on until they end: nothing tells that there was more.
constexpr std::array open{
    Row{"stream.ts", "mpegts", "", "aac", true},
    Row{"stream.mpg", "mpeg", "", "mp2", false},
    Row{"stream.aac", "adts", "", "aac", false},
};

MediaSpec specOf(const Row& row) {
    MediaSpec spec{
        .format = row.format, .seconds = wholeSeconds, .audio = {{.codec = row.audioCodec}}};
    if (row.hasPicture)
        spec.video = {{}};
    if (*row.movieFlags)
        spec.muxerOptions = {{"movflags", row.movieFlags}};
    return spec;
}

/// Six tenths of a file.
fs::path makeCut(const TempFolder& folder, const Row& row) {
    const fs::path path = makeSource(folder.path(), row.name, specOf(row));
    fs::resize_file(path, fs::file_size(path) * 6 / 10);
    return path;
}

/// A row of tables without a sample, but for the description of what they would be like.
std::string withoutSamples(std::string_view tables) {
    std::size_t size = 0;
    for (const char byte : tables.substr(0, 4))
        size = size << 8 | static_cast<unsigned char>(byte);
    const std::string none = media::test::u32(0);
    return std::string(tables.substr(0, size)) + media::test::fullBox("stts", 0, none) +
           media::test::fullBox("stsc", 0, none) + media::test::fullBox("stsz", 0, none + none) +
           media::test::fullBox("stco", 0, none);
}

} // namespace

TEST(CutShort, AFileThatStatesItsLengthIsAnErrorWithEveryTarget) {
    int tried = 0;
    for (const Row& row : stating) {
        SCOPED_TRACE(row.name);
        const TempFolder folder;
        const fs::path source = makeCut(folder, row);
        const Analysis analysis = analyze(source);
        ASSERT_TRUE(analysis.info) << analysis.sentence;
        const fs::path output = makeOutputFolder(folder.path()) / "out";
        for (const Target target : allTargets) {
            if (blocker(*analysis.info, target))
                continue;
            ++tried;
            const Conversion done = convert(
                {.source = source, .info = *analysis.info, .target = target, .output = output});
            EXPECT_FALSE(done.mode) << rawValue(target);
            EXPECT_EQ(done.sentence, endsEarly) << rawValue(target);
            EXPECT_TRUE(namesIn(output.parent_path()).empty());
        }
    }
    EXPECT_GE(tried, 22);
}

TEST(CutShort, AStreamIsAsLongAsItIs) {
    for (const Row& row : open) {
        SCOPED_TRACE(row.name);
        const TempFolder folder;
        const fs::path source = makeCut(folder, row);
        const fs::path output = makeOutputFolder(folder.path()) / "out";
        const Conversion done = convert(requestFor(source, Target::m4a, output));
        ASSERT_TRUE(done.mode) << done.sentence;
        EXPECT_NEAR(probe(output).durationSeconds.value_or(0), wholeSeconds * 0.6, 1);
    }
}

TEST(CutShort, ATrackThatIsStatedAndNotThereIsAnError) {
    const TempFolder folder;
    const fs::path source = makeSource(folder.path(), "source.mov", h264AndAac(4));
    constexpr std::array<std::string_view, 5> tables{"moov", "trak", "mdia", "minf", "stbl"};
    writeFile(source, media::test::editBox(readFile(source), tables, withoutSamples));
    const fs::path output = makeOutputFolder(folder.path()) / "out";
    for (const SizeOption size : {SizeOption::original, SizeOption::p720})
        for (const Target target : {Target::mp4, Target::mov}) {
            auto request = requestFor(source, target, output);
            request.size = size;
            EXPECT_EQ(convert(request).sentence, endsEarly);
            EXPECT_TRUE(namesIn(output.parent_path()).empty());
        }
    // The sound is whole.
    EXPECT_EQ(convert(requestFor(source, Target::m4a, output)).mode, Mode::boxlift);
}

} // namespace boxlift::test
