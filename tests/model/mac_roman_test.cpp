#include "model/mac_roman.h"

#include <gtest/gtest.h>

namespace boxlift {
namespace {

struct Row {
    int firstByte;
    std::string_view characters;
};

// Sixteen characters per row. Two of them cannot be told by the eye: 0xCA is the no-break space,
// 0xF0 stands in the private use area.
constexpr Row upperHalf[] = {
    {0x80, "ÄÅÇÉÑÖÜáàâäãåçéè"}, {0x90, "êëíìîïñóòôöõúùûü"},      {0xA0, "†°¢£§•¶ß®©™´¨≠ÆØ"},
    {0xB0, "∞±≤≥¥µ∂∑∏π∫ªºΩæø"}, {0xC0, "¿¡¬√ƒ≈∆«»…\u00A0ÀÃÕŒœ"}, {0xD0, "–—“”‘’÷◊ÿŸ⁄€‹›ﬁﬂ"},
    {0xE0, "‡·‚„‰ÂÊÁËÈÍÎÏÌÓÔ"}, {0xF0, "\uF8FFÒÚÛÙıˆ˜¯˘˙˚¸˝˛ˇ"},
};

std::string sixteenBytesFrom(int first) {
    std::string bytes;
    for (int byte = first; byte < first + 16; ++byte)
        bytes.push_back(static_cast<char>(byte));
    return bytes;
}

TEST(MacRoman, DecodesTheUpperHalf) {
    for (const Row& row : upperHalf)
        EXPECT_EQ(macRomanToUtf8(sixteenBytesFrom(row.firstByte)), row.characters)
            << std::hex << row.firstByte;
}

TEST(MacRoman, MapsAsciiAndControlBytesToThemselves) {
    for (int first = 0x00; first < 0x80; first += 16)
        EXPECT_EQ(macRomanToUtf8(sixteenBytesFrom(first)), sixteenBytesFrom(first))
            << std::hex << first;
}

TEST(MacRoman, HasTheEuroSignAndThePrivateUseCharacterAtTheirPlaces) {
    EXPECT_EQ(macRomanToUtf8("\xDB"), "\xE2\x82\xAC");
    EXPECT_EQ(macRomanToUtf8("\xF0"), "\xEF\xA3\xBF");
}

TEST(MacRoman, DecodesNothingToNothing) {
    EXPECT_EQ(macRomanToUtf8(""), "");
}

} // namespace
} // namespace boxlift
