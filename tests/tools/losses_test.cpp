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
