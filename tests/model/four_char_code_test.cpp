#include "model/four_char_code.h"

#include <gtest/gtest.h>

namespace boxlift {
namespace {

TEST(FourCharCode, HoldsTheFirstCharacterInTheMostSignificantByte) {
    EXPECT_EQ(fourCharCode("avc1"), 0x61766331U);
}

TEST(FourCharCode, KeepsATrailingSpace) {
    EXPECT_EQ(fourCharCode("aac "), 0x61616320U);
}

TEST(FourCharCode, TakesBytesAboveAsciiAsUnsigned) {
    EXPECT_EQ(fourCharCode("\xA9\xFF"
                           "a\x80"),
              0xA9FF6180U);
}

TEST(FourCharCode, IsKnownAtCompileTime) {
    constexpr FourCharCode code = fourCharCode(".mp3");
    static_assert(code == 0x2E6D7033U);
    EXPECT_EQ(code, 0x2E6D7033U);
}

} // namespace
} // namespace boxlift
