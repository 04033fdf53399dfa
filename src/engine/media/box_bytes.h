#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "model/four_char_code.h"

// Boxes of the MPEG-4 and QuickTime family (ISO/IEC 14496-12, 4.2) as bytes in memory.
namespace boxlift::media::box_bytes {

using Bytes = std::vector<std::uint8_t>;

/// Bytes of a box's size and type.
constexpr std::size_t headerSize = 8;

/// `value` in `count` bytes, the highest first.
inline void put(Bytes& bytes, std::uint64_t value, int count) {
    for (int shift = 8 * (count - 1); shift >= 0; shift -= 8)
        bytes.push_back(static_cast<std::uint8_t>(value >> shift & 0xff));
}

inline void put(Bytes& bytes, std::string_view text) {
    bytes.insert(bytes.end(), text.begin(), text.end());
}

inline void put(Bytes& bytes, std::span<const std::uint8_t> more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

/// `contents` are less than 4 GiB.
inline void putBox(Bytes& bytes, FourCharCode type, std::span<const std::uint8_t> contents) {
    put(bytes, contents.size() + headerSize, 4);
    put(bytes, type, 4);
    put(bytes, contents);
}

/// The same, by itself.
inline Bytes box(FourCharCode type, std::span<const std::uint8_t> contents) {
    Bytes bytes;
    bytes.reserve(contents.size() + headerSize);
    putBox(bytes, type, contents);
    return bytes;
}

/// The number in the first `count` bytes of `bytes`.
inline std::uint64_t numberIn(std::span<const std::uint8_t> bytes, std::size_t count) {
    std::uint64_t value = 0;
    for (const std::uint8_t byte : bytes.first(count))
        value = value << 8 | byte;
    return value;
}

inline void store(std::span<std::uint8_t> into, std::uint64_t value) {
    for (std::size_t i = into.size(); i > 0; --i, value >>= 8)
        into[i - 1] = static_cast<std::uint8_t>(value & 0xff);
}

} // namespace boxlift::media::box_bytes
