#pragma once

#include <cstdint>

namespace boxlift {

/// A four-character code (ISO/IEC 14496-12): the first character in the most significant byte.
/// A trailing space is part of the code.
using FourCharCode = std::uint32_t;

/// `fourCharCode("avc1")` is 0x61766331.
constexpr FourCharCode fourCharCode(const char (&text)[5]) {
    FourCharCode code = 0;
    for (int i = 0; i < 4; ++i)
        code = (code << 8) | static_cast<unsigned char>(text[i]);
    return code;
}

} // namespace boxlift
