#pragma once

#include <array>
#include <string>
#include <string_view>

#include "engine/media/box_writer.h"

namespace boxlift::media::test {

inline std::uint32_t readU32(std::string_view bytes, std::size_t place) {
    std::uint32_t value = 0;
    for (const char byte : bytes.substr(place, 4))
        value = value << 8 | static_cast<unsigned char>(byte);
    return value;
}

/// A movie of one video track with reordered pictures, written as some cameras do: the shown times
/// by composition offsets below zero instead of by an edit.
inline std::string withNegativeOffsets(std::string_view movie) {
    constexpr std::array<std::string_view, 6> offsets{"moov", "trak", "mdia",
                                                      "minf", "stbl", "ctts"};
    constexpr std::array<std::string_view, 4> edits{"moov", "trak", "edts", "elst"};
    constexpr std::size_t firstRow = 8;
    const std::string shifted = editBox(movie, offsets, [&](std::string_view old) {
        const std::uint32_t lead = readU32(old, firstRow + 4);
        std::string rows = u32(1U << 24) + std::string(old.substr(4, 4));
        for (std::size_t row = firstRow; row + 8 <= old.size(); row += 8)
            rows += std::string(old.substr(row, 4)) + u32(readU32(old, row + 4) - lead);
        return rows;
    });
    // Version and flags, count, length; then where in the media the edit begins.
    constexpr std::size_t mediaTime = 12;
    return editBox(shifted, edits, [](std::string_view old) {
        return std::string(old).replace(mediaTime, 4, u32(0));
    });
}

} // namespace boxlift::media::test
