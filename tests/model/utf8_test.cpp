#include "model/utf8.h"

#include <gtest/gtest.h>

namespace boxlift {

namespace {

TEST(Utf8Length, CountsTheBytesOfTheFirstCharacter) {
    EXPECT_EQ(utf8Length(std::string_view("\0", 1)), 1U);
    EXPECT_EQ(utf8Length("ab"), 1U);
    EXPECT_EQ(utf8Length("éa"), 2U);
    EXPECT_EQ(utf8Length("€a"), 3U);
    EXPECT_EQ(utf8Length("\xed\x9f\xbf"), 3U);
    EXPECT_EQ(utf8Length("\xee\x80\x80"), 3U);
    EXPECT_EQ(utf8Length("𝄞a"), 4U);
    EXPECT_EQ(utf8Length("\xf4\x8f\xbf\xbf"), 4U);
}

TEST(Utf8Length, IsZeroForWhatBreaksOff) {
    for (const char* text : {"\xc3", "\xe2\x82", "\xe2\x82 ", "\xf0\x9d\x84", "\xf0\x9d\x84 "})
        EXPECT_EQ(utf8Length(text), 0U) << text;
}

TEST(Utf8Length, IsZeroForOverlongFormsSurrogatesAndTooLargeNumbers) {
    for (const char* text : {"\x80", "\xc0\x80", "\xc1\xbf", "\xe0\x9f\xbf", "\xed\xa0\x80",
                             "\xf0\x8f\xbf\xbf", "\xf4\x90\x80\x80", "\xf5\x80\x80\x80", "\xff"})
        EXPECT_EQ(utf8Length(text), 0U) << text;
}

} // namespace

} // namespace boxlift
