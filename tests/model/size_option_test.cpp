#include "model/size_option.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace boxlift {
namespace {

struct Row {
    SizeOption size;
    std::string_view rawValue;
    std::string_view label;
    std::string_view exportPreset;
};

constexpr Row rows[] = {
    {SizeOption::original, "original", "Original size", "AVAssetExportPresetHighestQuality"},
    {SizeOption::p1080, "p1080", "1080p", "AVAssetExportPreset1920x1080"},
    {SizeOption::p720, "p720", "720p", "AVAssetExportPreset1280x720"},
};

TEST(SizeOption, ListsItsCasesInTheOrderOfThePickers) {
    EXPECT_THAT(allSizeOptions,
                testing::ElementsAre(SizeOption::original, SizeOption::p1080, SizeOption::p720));
}

TEST(SizeOption, HasOneRawValuePerCase) {
    for (const Row& row : rows)
        EXPECT_EQ(rawValue(row.size), row.rawValue);
}

TEST(SizeOption, IsFoundByItsRawValue) {
    for (const Row& row : rows)
        EXPECT_EQ(sizeOptionFromRawValue(row.rawValue), row.size) << row.rawValue;
}

TEST(SizeOption, IsNotFoundByAnyOtherText) {
    for (const std::string_view text : {"Original", "ORIGINAL", "P1080", "P720", "1080p", "720p",
                                        "Original size", "", " p720", "p720 ", "p72", "p7200"})
        EXPECT_EQ(sizeOptionFromRawValue(text), std::nullopt) << text;
}

TEST(SizeOption, HasOneLabelPerCase) {
    for (const Row& row : rows)
        EXPECT_EQ(label(row.size), row.label) << row.rawValue;
}

TEST(SizeOption, NamesTheExportPreset) {
    for (const Row& row : rows)
        EXPECT_EQ(name(exportPreset(row.size)), row.exportPreset) << row.rawValue;
}

} // namespace
} // namespace boxlift
