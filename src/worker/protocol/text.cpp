#include "worker/protocol/text.h"

#include <algorithm>
#include <array>

namespace boxlift::worker {

namespace {

bool isControl(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte < 0x20 || byte == 0x7f;
}

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

/// The length in bytes of the character that `text` begins with; 0 when that is none.
std::size_t characterLength(std::string_view text) {
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

} // namespace

bool isLine(std::string_view text) {
    if (std::ranges::any_of(text, isControl))
        return false;
    while (!text.empty()) {
        const std::size_t length = characterLength(text);
        if (length == 0)
            return false;
        text.remove_prefix(length);
    }
    return true;
}

void makePrintable(std::string& text) {
    std::ranges::replace_if(text, isControl, '?');
}

} // namespace boxlift::worker
