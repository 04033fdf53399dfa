#include "engine/media/aac_window.h"

#include <array>
#include <gtest/gtest.h>

namespace boxlift::media {

namespace {

TEST(AacWindow, IsReadFromAChannelPairThatSharesIt) {
    // Element 1, tag 0, common window, reserved, sequence 1, shape 1.
    const std::array<std::uint8_t, 5> packet{0b0010'0001, 0b0011'0000, 0, 0, 0};
    EXPECT_EQ(readAacWindow(packet), (AacWindow{1, 1}));
}

TEST(AacWindow, IsReadFromASingleChannel) {
    // Element 0, tag 0, gain 0xaa, reserved, sequence 2, shape 0.
    const std::array<std::uint8_t, 4> packet{0b0000'0001, 0b0101'0100, 0b1000'0000, 0};
    EXPECT_EQ(readAacWindow(packet), (AacWindow{2, 0}));
}

TEST(AacWindow, IsNotOneWhereEachChannelHasItsOwn) {
    const std::array<std::uint8_t, 4> packet{0b0010'0000, 0xff, 0xff, 0xff};
    EXPECT_FALSE(readAacWindow(packet));
}

TEST(AacWindow, IsNotReadFromOtherElementsOrTooFewBytes) {
    const std::array<std::uint8_t, 4> filler{0b1100'0001, 0b0011'0000, 0, 0};
    EXPECT_FALSE(readAacWindow(filler));
    EXPECT_FALSE(readAacWindow(std::array<std::uint8_t, 3>{0b0010'0001, 0b0011'0000, 0}));
    EXPECT_FALSE(readAacWindow({}));
}

} // namespace

} // namespace boxlift::media
