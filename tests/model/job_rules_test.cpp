#include "model/job_rules.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <vector>

namespace boxlift {
namespace {

constexpr MediaInfo film{true, true, {}, {}, 1920, 1080, 60};
constexpr MediaInfo silentFilm{true, false, {}, {}, 1920, 1080, 60};
constexpr MediaInfo song{false, true, {}, {}, 0, 0, 60};
constexpr MediaInfo empty{};

constexpr const char* noAudioTrack = "This file has no audio track to extract.";
constexpr const char* audioFile = "This is an audio file. Choose M4A or AAC audio only.";

TEST(Blocker, LetsAFileWithBothTracksTakeAnyTarget) {
    for (const Target target : allTargets)
        EXPECT_EQ(blocker(film, target), std::nullopt) << rawValue(target);
}

TEST(Blocker, KeepsAFileWithoutAudioFromAudioTargets) {
    EXPECT_EQ(blocker(silentFilm, Target::m4a), noAudioTrack);
    EXPECT_EQ(blocker(silentFilm, Target::aac), noAudioTrack);
    EXPECT_EQ(blocker(silentFilm, Target::mp4), std::nullopt);
    EXPECT_EQ(blocker(silentFilm, Target::mov), std::nullopt);
}

TEST(Blocker, KeepsAFileWithoutVideoFromVideoTargets) {
    EXPECT_EQ(blocker(song, Target::mp4), audioFile);
    EXPECT_EQ(blocker(song, Target::mov), audioFile);
    EXPECT_EQ(blocker(song, Target::m4a), std::nullopt);
    EXPECT_EQ(blocker(song, Target::aac), std::nullopt);
}

TEST(Blocker, NamesTheTrackThatTheTargetNeedsWhenThereIsNeither) {
    EXPECT_EQ(blocker(empty, Target::m4a), noAudioTrack);
    EXPECT_EQ(blocker(empty, Target::aac), noAudioTrack);
    EXPECT_EQ(blocker(empty, Target::mp4), audioFile);
    EXPECT_EQ(blocker(empty, Target::mov), audioFile);
}

TEST(TargetFor, SwitchesAFileWithoutVideoFromVideoTargetsToM4a) {
    for (const MediaInfo& info : {song, empty}) {
        EXPECT_EQ(targetFor(info, Target::mp4), Target::m4a);
        EXPECT_EQ(targetFor(info, Target::mov), Target::m4a);
    }
}

TEST(TargetFor, KeepsAudioTargets) {
    for (const MediaInfo& info : {film, silentFilm, song, empty}) {
        EXPECT_EQ(targetFor(info, Target::m4a), Target::m4a);
        EXPECT_EQ(targetFor(info, Target::aac), Target::aac);
    }
}

TEST(TargetFor, KeepsVideoTargetsOfAFileWithVideo) {
    for (const MediaInfo& info : {film, silentFilm}) {
        EXPECT_EQ(targetFor(info, Target::mp4), Target::mp4);
        EXPECT_EQ(targetFor(info, Target::mov), Target::mov);
    }
}

TEST(TargetFor, LeavesAnAudioFileWithoutABlocker) {
    for (const Target target : allTargets)
        EXPECT_EQ(blocker(song, targetFor(song, target)), std::nullopt) << rawValue(target);
}

struct SplitName {
    std::string_view fileName;
    std::string_view baseName;
    std::string_view extension;
};

constexpr SplitName splitNames[] = {
    {"clip.mp4", "clip", "mp4"},
    {"clip", "clip", ""},
    {"a.tar.gz", "a.tar", "gz"},
    {".hidden", ".hidden", "hidden"},
    {".mkv", ".mkv", "mkv"},
    {".hidden.mkv", ".hidden", "mkv"},
    {"a.", "a", ""},
    {"a..mov", "a.", "mov"},
    {"...", "..", ""},
    {"Clip.MOV", "Clip", "MOV"},
    {"my clip.v2 final.mov", "my clip.v2 final", "mov"},
    {"%03d: -x\n.mov", "%03d: -x\n", "mov"},
    {"\xFF\xFE.mo\x80v", "\xFF\xFE", "mo\x80v"},
    {"Ünï.mp4", "Ünï", "mp4"},
};

TEST(BaseName, IsTheNameWithoutWhatFollowsItsLastDot) {
    for (const SplitName& row : splitNames)
        EXPECT_EQ(baseName(row.fileName), row.baseName) << row.fileName;
}

TEST(PathExtension, IsWhatFollowsTheLastDot) {
    for (const SplitName& row : splitNames)
        EXPECT_EQ(pathExtension(row.fileName), row.extension) << row.fileName;
}

std::string outputNameBeside(const std::set<std::string>& taken, std::string_view input,
                             Target target) {
    return outputName(input, target, [&](const std::string& name) { return taken.contains(name); });
}

TEST(OutputName, TakesTheExtensionOfTheTarget) {
    EXPECT_EQ(outputNameBeside({}, "clip.mkv", Target::mp4), "clip.mp4");
    EXPECT_EQ(outputNameBeside({}, "clip.mkv", Target::mov), "clip.mov");
    EXPECT_EQ(outputNameBeside({}, "clip.mkv", Target::m4a), "clip.m4a");
    EXPECT_EQ(outputNameBeside({}, "clip.mkv", Target::aac), "clip.m4a");
}

TEST(OutputName, KeepsEarlierDotsAndHiddenNames) {
    EXPECT_EQ(outputNameBeside({}, "a.tar.gz", Target::mp4), "a.tar.mp4");
    EXPECT_EQ(outputNameBeside({}, "noextension", Target::mp4), "noextension.mp4");
    EXPECT_EQ(outputNameBeside({}, ".hidden", Target::mp4), ".hidden.mp4");
    EXPECT_EQ(outputNameBeside({}, "a.", Target::mp4), "a.mp4");
}

TEST(OutputName, CountsFromTwoWhenTheNameIsTaken) {
    EXPECT_EQ(outputNameBeside({"clip.mp4"}, "clip.mp4", Target::mp4), "clip 2.mp4");
    EXPECT_EQ(outputNameBeside({"a.mp4", "a 2.mp4"}, "a.mov", Target::mp4), "a 3.mp4");
}

TEST(OutputName, FillsTheFirstGap) {
    EXPECT_EQ(outputNameBeside({"a.mp4", "a 3.mp4"}, "a.mov", Target::mp4), "a 2.mp4");
    EXPECT_EQ(outputNameBeside({"a 2.mp4"}, "a.mov", Target::mp4), "a.mp4");
}

TEST(OutputName, CountsOnFromANameThatEndsInANumber) {
    EXPECT_EQ(outputNameBeside({"a 2.mp4"}, "a 2.mov", Target::mp4), "a 2 2.mp4");
}

TEST(OutputName, TellsNamesApartByTheirCase) {
    EXPECT_EQ(outputNameBeside({"Clip.mp4"}, "clip.mov", Target::mp4), "clip.mp4");
}

TEST(OutputName, LetsM4aAndAacMeetInOneName) {
    EXPECT_EQ(outputNameBeside({"song.m4a"}, "song.wav", Target::aac), "song 2.m4a");
}

TEST(OutputName, KeepsBytesThatAreNotUtf8) {
    EXPECT_EQ(outputNameBeside({}, "\xFF\x80 clip.mov", Target::mp4), "\xFF\x80 clip.mp4");
    EXPECT_EQ(outputNameBeside({"\xE9t\xE9.mp4"}, "\xE9t\xE9.mov", Target::mp4), "\xE9t\xE9 2.mp4");
}

TEST(OutputName, AsksForEachNameOnceAndInOrder) {
    std::vector<std::string> asked;
    const std::string name = outputName("a.mov", Target::mov, [&](const std::string& candidate) {
        asked.push_back(candidate);
        return asked.size() < 12;
    });
    EXPECT_EQ(name, "a 12.mov");
    EXPECT_THAT(asked, testing::ElementsAre("a.mov", "a 2.mov", "a 3.mov", "a 4.mov", "a 5.mov",
                                            "a 6.mov", "a 7.mov", "a 8.mov", "a 9.mov", "a 10.mov",
                                            "a 11.mov", "a 12.mov"));
}

} // namespace
} // namespace boxlift
