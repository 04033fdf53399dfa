#include "model/target.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace boxlift {
namespace {

struct Row {
    Target target;
    std::string_view rawValue;
    std::string_view label;
    std::string_view shortLabel;
    bool isAudio;
    std::string_view fileExtension;
    std::string_view fileType;
};

constexpr Row rows[] = {
    {Target::mp4, "mp4", "MP4 (H.264 + AAC)", "MP4", false, "mp4", "AVFileTypeMPEG4"},
    {Target::mov, "mov", "MOV", "MOV", false, "mov", "AVFileTypeQuickTimeMovie"},
    {Target::m4a, "m4a", "M4A audio", "M4A", true, "m4a", "AVFileTypeAppleM4A"},
    {Target::aac, "aac", "AAC audio only (128k)", "AAC 128k", true, "m4a", "AVFileTypeAppleM4A"},
};

TEST(Target, ListsItsCasesInTheOrderOfThePickers) {
    EXPECT_THAT(allTargets,
                testing::ElementsAre(Target::mp4, Target::mov, Target::m4a, Target::aac));
}

TEST(Target, HasOneRawValuePerCase) {
    for (const Row& row : rows)
        EXPECT_EQ(rawValue(row.target), row.rawValue);
}

TEST(Target, IsFoundByItsRawValue) {
    for (const Row& row : rows)
        EXPECT_EQ(targetFromRawValue(row.rawValue), row.target) << row.rawValue;
}

TEST(Target, IsNotFoundByAnyOtherText) {
    for (const std::string_view text :
         {"MP4", "Mp4", "MOV", "M4A", "AAC", "", " mp4", "mp4 ", "mp", "mp44", "AAC 128k", "0"})
        EXPECT_EQ(targetFromRawValue(text), std::nullopt) << text;
    EXPECT_EQ(targetFromRawValue(std::string_view("mp4\0", 4)), std::nullopt);
}

TEST(Target, HasALongAndACompactLabel) {
    for (const Row& row : rows) {
        EXPECT_EQ(label(row.target), row.label);
        EXPECT_EQ(shortLabel(row.target), row.shortLabel);
    }
}

TEST(Target, KnowsWhichCasesAreAudio) {
    for (const Row& row : rows)
        EXPECT_EQ(isAudio(row.target), row.isAudio) << row.rawValue;
}

TEST(Target, NamesTheExtensionAndTheContainerThatAreWritten) {
    for (const Row& row : rows) {
        EXPECT_EQ(fileExtension(row.target), row.fileExtension) << row.rawValue;
        EXPECT_EQ(name(fileType(row.target)), row.fileType) << row.rawValue;
    }
}

TEST(Target, WritesAacAudioIntoTheSameKindOfFileAsM4a) {
    EXPECT_EQ(fileExtension(Target::aac), "m4a");
    EXPECT_EQ(fileType(Target::aac), fileType(Target::m4a));
}

} // namespace
} // namespace boxlift
