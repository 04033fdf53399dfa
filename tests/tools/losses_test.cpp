#include "fidelity/losses.h"

#include <gtest/gtest.h>

#include <sstream>

#include "fidelity/causes.h"
#include "fidelity/report.h"

namespace boxlift::fidelity {

namespace {

Outcome copyTo(Target target) {
    Outcome outcome;
    outcome.target = target;
    outcome.mode = outcome.planned = Mode::boxlift;
    return outcome;
}

test::ProbedFile file(std::map<std::string, std::string> tags = {}) {
    test::ProbedFile file;
    file.metadata = std::move(tags);
    return file;
}

test::ProbedStream stream(test::StreamKind kind, std::string codec, std::string tag = "") {
    test::ProbedStream stream;
    stream.kind = kind;
    stream.codec = std::move(codec);
    stream.codecTag = std::move(tag);
    stream.packets.resize(1);
    return stream;
}

std::vector<std::string> causesOf(const test::ProbedFile& source, const test::ProbedFile& output,
                                  const Outcome& outcome) {
    std::vector<std::string> found;
    for (const Loss& loss : lossesBetween(source, output, outcome))
        found.push_back(loss.cause);
    return found;
}

using Causes = std::vector<std::string>;

} // namespace

TEST(Losses, AreTagsThatAreGoneOrOthers) {
    const auto source = file({{"title", "One"}, {"artist", "Two"}, {"encoder", "any"}});
    EXPECT_EQ(causesOf(source, file({{"TITLE", "One"}, {"artist", "Two"}}), copyTo(Target::mp4)),
              Causes{});
    EXPECT_EQ(causesOf(source, file({{"title", "One"}}), copyTo(Target::mp4)), Causes{"tag"});
    EXPECT_EQ(causesOf(source, file({{"title", "Six"}, {"artist", "Two"}}), copyTo(Target::mp4)),
              Causes{"tag with another value"});
}

TEST(Losses, AreNoTagsUnderAnotherName) {
    const auto source = file({{"make", "Maker"}, {"make-eng", "Maker"}, {"track", "01/09"}});
    const auto output = file({{"com.apple.quicktime.make", "Maker"}, {"track", "1/9"}});
    EXPECT_EQ(causesOf(source, output, copyTo(Target::mp4)), Causes{});
}

TEST(Losses, AreTracksThatAreGone) {
    auto source = file();
    source.streams = {stream(test::StreamKind::video, "h264"),
                      stream(test::StreamKind::audio, "aac"),
                      stream(test::StreamKind::data, "", "tmcd")};
    auto output = file();
    output.streams = {source.streams[0], source.streams[1]};
    EXPECT_EQ(causesOf(source, output, copyTo(Target::mp4)), Causes{"timecode"});
    output.streams = {source.streams[1]};
    EXPECT_EQ(causesOf(source, output, copyTo(Target::mp4)), (Causes{"timecode", "tracks"}));
    EXPECT_EQ(causesOf(source, output, copyTo(Target::m4a)), Causes{"timecode"});
}

TEST(Losses, AreDatesThatAreGoneAndOddOnesByAnotherName) {
    const auto lossOf = [](const char* date) {
        return causesOf(file({{"creation_time", date}}), file(), copyTo(Target::mp4));
    };
    EXPECT_EQ(lossOf("2021-02-03T04:05:06.000000Z"), Causes{"tag"});
    EXPECT_EQ(lossOf("14:36:22"), Causes{"odd date"});
    EXPECT_EQ(lossOf("1970-01-01T00:00:00.000000Z"), Causes{"odd date"});
}

TEST(Losses, AreKeysOfOtherProgramsThanTheKnownOne) {
    const auto lossOf = [](const char* key) {
        return causesOf(file({{key, "words"}}), file(), copyTo(Target::mp4));
    };
    EXPECT_EQ(lossOf("com.apple.finalcutstudio.media.uuid"), Causes{"key of one program"});
    EXPECT_EQ(lossOf("com.apple.quicktime.content.identifier"), Causes{"tag"});
}

TEST(Losses, AreSubtitlesBesideSound) {
    auto source = file();
    source.streams = {stream(test::StreamKind::audio, "aac"),
                      stream(test::StreamKind::subtitle, "mov_text")};
    auto output = file();
    output.streams = {source.streams[0]};
    EXPECT_EQ(causesOf(source, output, copyTo(Target::m4a)), Causes{"text beside sound"});
    EXPECT_EQ(causesOf(source, output, copyTo(Target::mov)), Causes{"subtitles"});
}

TEST(Losses, AreChannelsAndRatesThatAnEncodingHasNot) {
    auto source = file();
    source.streams = {stream(test::StreamKind::audio, "pcm_s24le")};
    auto output = file();
    output.streams = {stream(test::StreamKind::audio, "aac")};
    source.streams[0].channels = 8;
    output.streams[0].channels = 6;
    source.streams[0].sampleRate = 192000;
    output.streams[0].sampleRate = 48000;
    Outcome outcome = copyTo(Target::mp4);
    outcome.mode = Mode::reencode;
    EXPECT_EQ(causesOf(source, output, outcome), (Causes{"folded channels", "high sample rate"}));
}

TEST(Losses, AreWaysOfProjectionThatAreGone) {
    auto source = file();
    source.streams = {stream(test::StreamKind::video, "h264")};
    auto output = source;
    source.streams[0].projection = "equirectangular";
    source.streams[0].stereo = "top and bottom";
    for (const Mode mode : {Mode::boxlift, Mode::reencode}) {
        Outcome outcome = copyTo(Target::mp4);
        outcome.mode = mode;
        EXPECT_EQ(causesOf(source, output, outcome), (Causes{"projection", "stereo"}));
    }
}

TEST(Losses, AreListedAsUnexplainedWithoutAReason) {
    ASSERT_NE(reasonFor("timecode"), nullptr);
    ASSERT_EQ(reasonFor("tracks"), nullptr);
    FileReport report;
    report.name = "some|file";
    report.outcomes = {copyTo(Target::mp4)};
    report.outcomes[0].losses = {{"tracks", "2 before, 1 after"}, {"timecode", ""}};
    std::ostringstream text;
    writeReport(text, {report});
    EXPECT_NE(text.str().find("- tracks 2 before, 1 after: some\\|file to mp4, copied"),
              std::string::npos);
    EXPECT_EQ(text.str().find("- timecode"), std::string::npos);
}

} // namespace boxlift::fidelity
