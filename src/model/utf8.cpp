#include "model/utf8.h"

#include <algorithm>
#include <array>

namespace boxlift {

namespace {

/// What a lead byte tells: how many bytes follow it, and the range of the first of them, which is
/// where overlong forms, surrogates and too large numbers show.
struct Lead {
    unsigned char first;
    unsigned char last;
    std::size_t following;
    unsigned char lowest;
    unsigned char highest;
};

constexpr auto leads = std::to_array<Lead>({
    {0x00, 0x7f, 0, 0, 0},
    {0xc2, 0xdf, 1, 0x80, 0xbf},
    {0xe0, 0xe0, 2, 0xa0, 0xbf},
    {0xe1, 0xec, 2, 0x80, 0xbf},
    {0xed, 0xed, 2, 0x80, 0x9f},
    {0xee, 0xef, 2, 0x80, 0xbf},
    {0xf0, 0xf0, 3, 0x90, 0xbf},
    {0xf1, 0xf3, 3, 0x80, 0xbf},
    {0xf4, 0xf4, 3, 0x80, 0x8f},
});

} // namespace

std::size_t utf8Length(std::string_view text) {
    const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const auto* lead = std::ranges::find_if(
        leads, [&](const Lead& row) { return byteAt(0) >= row.first && byteAt(0) <= row.last; });
    if (lead == leads.end() || text.size() <= lead->following)
        return 0;
    for (std::size_t i = 1; i <= lead->following; ++i) {
        const unsigned char lowest = i == 1 ? lead->lowest : 0x80;
        const unsigned char highest = i == 1 ? lead->highest : 0xbf;
        if (byteAt(i) < lowest || byteAt(i) > highest)
            return 0;
    }
    return lead->following + 1;
}

} // namespace boxlift
