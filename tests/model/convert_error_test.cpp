#include "model/convert_error.h"

#include <gtest/gtest.h>

namespace boxlift {
namespace {

TEST(ConvertError, ReportsItsMessageUnchanged) {
    const ConvertError error("The file can't be opened… sorry.");
    EXPECT_EQ(error.message(), "The file can't be opened… sorry.");
    EXPECT_EQ(error.errorDescription(), "The file can't be opened… sorry.");
    EXPECT_STREQ(error.what(), "The file can't be opened… sorry.");
}

TEST(ConvertError, PutsNothingInPlaceOfAnEmptyMessage) {
    const ConvertError error("");
    EXPECT_EQ(error.message(), "");
    EXPECT_EQ(error.errorDescription(), "");
    EXPECT_STREQ(error.what(), "");
}

TEST(ConvertError, KeepsItsMessageThroughAThrowAsAStandardException) {
    std::string description;
    try {
        throw ConvertError("No room.");
    } catch (const std::exception& error) {
        description = error.what();
    }
    EXPECT_EQ(description, "No room.");
}

TEST(ConvertError, EqualsAnotherWithTheSameMessageOnly) {
    EXPECT_EQ(ConvertError("a"), ConvertError("a"));
    EXPECT_FALSE(ConvertError("a") == ConvertError("A"));
}

} // namespace
} // namespace boxlift
