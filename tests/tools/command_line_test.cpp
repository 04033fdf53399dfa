#include "drive/command_line.h"

#include <initializer_list>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace boxlift::drive {
namespace {

using testing::ElementsAre;

CommandLine parse(std::initializer_list<std::string_view> arguments) {
    return parseCommandLine(std::vector<std::string_view>(arguments), "/here");
}

/// The complaint about a wrong command line; empty when it is right.
std::string complaint(std::initializer_list<std::string_view> arguments) {
    try {
        parse(arguments);
        return {};
    } catch (const UsageError& error) {
        return error.what();
    }
}

TEST(CommandLine, AnalyzeTakesPaths) {
    const CommandLine line = parse({"analyze", "a.mov", "/films/b.mov"});

    EXPECT_EQ(line.command, Command::analyze);
    EXPECT_THAT(line.paths, ElementsAre("/here/a.mov", "/films/b.mov"));
}

TEST(CommandLine, ConvertHasTheDefaultsOfTheWindow) {
    const CommandLine line = parse({"convert", "--output-dir", "out", "a.mov"});

    EXPECT_EQ(line.command, Command::convert);
    EXPECT_EQ(line.target, Target::mp4);
    EXPECT_EQ(line.size, SizeOption::original);
    EXPECT_FALSE(line.removeAudio);
    EXPECT_EQ(line.outputDir, "/here/out");
    EXPECT_THAT(line.paths, ElementsAre("/here/a.mov"));
}

TEST(CommandLine, ReadsEveryOption) {
    const CommandLine line = parse({"convert", "--target", "mov", "--size", "p720",
                                    "--remove-audio", "--output-dir", "/out", "a.mov"});

    EXPECT_EQ(line.target, Target::mov);
    EXPECT_EQ(line.size, SizeOption::p720);
    EXPECT_TRUE(line.removeAudio);
    EXPECT_EQ(line.outputDir, "/out");
}

TEST(CommandLine, ReadsValuesBehindAnEqualsSign) {
    const CommandLine line =
        parse({"convert", "--size=p1080", "--output-dir=/o=ut", "--target=aac", "a.mov"});

    EXPECT_EQ(line.target, Target::aac);
    EXPECT_EQ(line.size, SizeOption::p1080);
    EXPECT_EQ(line.outputDir, "/o=ut");
}

TEST(CommandLine, TakesEveryTargetAndSize) {
    for (const Target target : allTargets)
        EXPECT_EQ(parse({"convert", "--output-dir=o", "--target", rawValue(target), "a"}).target,
                  target);
    for (const SizeOption size : allSizeOptions)
        EXPECT_EQ(parse({"convert", "--output-dir=o", "--size", rawValue(size), "a"}).size, size);
}

TEST(CommandLine, TheLastOfAnOptionGivenTwiceCounts) {
    EXPECT_EQ(
        parse({"convert", "--target=mov", "--output-dir=o", "--target", "m4a", "a.mov"}).target,
        Target::m4a);
}

TEST(CommandLine, AValueMayBeginWithADash) {
    EXPECT_EQ(parse({"convert", "--output-dir", "-out", "a.mov"}).outputDir, "/here/-out");
}

TEST(CommandLine, TwoDashesEndTheOptions) {
    EXPECT_THAT(parse({"convert", "--output-dir=o", "--", "--target", "-"}).paths,
                ElementsAre("/here/--target", "/here/-"));
    EXPECT_THAT(parse({"analyze", "a", "--", "-b", "--"}).paths,
                ElementsAre("/here/a", "/here/-b", "/here/--"));
}

TEST(CommandLine, ComplainsAboutTheCommand) {
    EXPECT_EQ(complaint({}), "no command");
    EXPECT_EQ(complaint({"transmogrify", "a.mov"}), "unknown command 'transmogrify'");
    EXPECT_EQ(complaint({"Analyze", "a.mov"}), "unknown command 'Analyze'");
}

TEST(CommandLine, ComplainsWhenThereIsNothingToWorkOn) {
    EXPECT_EQ(complaint({"analyze"}), "no paths");
    EXPECT_EQ(complaint({"analyze", "--"}), "no paths");
    EXPECT_EQ(complaint({"convert", "--output-dir", "out"}), "no paths");
    EXPECT_EQ(complaint({"analyze", "a.mov", ""}), "an empty path");
}

TEST(CommandLine, ComplainsWhenTheOutputFolderIsMissing) {
    EXPECT_EQ(complaint({"convert", "a.mov"}), "--output-dir is missing");
    EXPECT_EQ(complaint({"convert", "--output-dir=", "a.mov"}), "an empty path");
}

TEST(CommandLine, ComplainsAboutOptionsThatItDoesNotKnow) {
    EXPECT_EQ(complaint({"convert", "--quality=9", "a"}), "unknown option '--quality'");
    EXPECT_EQ(complaint({"convert", "-t", "mov", "a"}), "unknown option '-t'");
    EXPECT_EQ(complaint({"convert", "--targe", "mov", "a"}), "unknown option '--targe'");
    EXPECT_EQ(complaint({"analyze", "--target", "mov", "a"}), "unknown option '--target'");
    EXPECT_EQ(complaint({"analyze", "-"}), "unknown option '-'");
}

TEST(CommandLine, ComplainsAboutValues) {
    EXPECT_EQ(complaint({"convert", "--target", "MP4", "a"}), "unknown value 'MP4'");
    EXPECT_EQ(complaint({"convert", "--target=", "a"}), "unknown value ''");
    EXPECT_EQ(complaint({"convert", "--size", "1080p", "a"}), "unknown value '1080p'");
    EXPECT_EQ(complaint({"convert", "--remove-audio=yes", "a"}),
              "no value belongs to '--remove-audio'");
    EXPECT_EQ(complaint({"convert", "--output-dir"}), "a value is missing after '--output-dir'");
}

TEST(CommandLine, ComplainsAboutOptionsBehindPaths) {
    EXPECT_EQ(complaint({"convert", "--output-dir=o", "a.mov", "--remove-audio"}),
              "options stand before the paths, not '--remove-audio'");
}

TEST(CommandLine, NeedsACurrentFolderForRelativePathsAlone) {
    const std::vector<std::string_view> absolute{"analyze", "/films/a.mov"};
    const std::vector<std::string_view> relative{"analyze", "a.mov"};

    EXPECT_THAT(parseCommandLine(absolute, {}).paths, ElementsAre("/films/a.mov"));
    EXPECT_THROW(parseCommandLine(relative, {}), UsageError);
}

} // namespace
} // namespace boxlift::drive
