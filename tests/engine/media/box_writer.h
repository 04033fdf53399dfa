#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

/// Boxes of the MPEG-4 and QuickTime family, byte by byte.
namespace boxlift::media::test {

/// `value` in `bytes` bytes, the highest first.
inline std::string bigEndian(std::uint64_t value, int bytes) {
    std::string text;
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
        text += static_cast<char>(value >> shift & 0xff);
    return text;
}
inline std::string u32(std::uint64_t value) {
    return bigEndian(value, 4);
}
inline std::string u64(std::uint64_t value) {
    return bigEndian(value, 8);
}

inline std::string box(std::string_view type, const std::string& contents) {
    return u32(contents.size() + 8).append(type).append(contents);
}
/// With its size in 64 bits.
inline std::string longBox(std::string_view type, const std::string& contents) {
    return u32(1).append(type).append(u64(contents.size() + 16)).append(contents);
}
/// With a version and flags of zero.
inline std::string fullBox(std::string_view type, int version, const std::string& contents) {
    return box(type, bigEndian(static_cast<std::uint64_t>(version) << 24, 4) + contents);
}

/// `bytes` with the contents of the first box at `path` (outermost first) changed; the sizes of
/// those around it follow. Only for boxes with sizes of 32 bits.
inline std::string editBox(std::string_view bytes, std::span<const std::string_view> path,
                           const std::function<std::string(std::string_view)>& edit) {
    std::string result;
    bool isDone = false;
    while (bytes.size() >= 8) {
        std::size_t size = 0;
        for (int i = 0; i < 4; ++i)
            size = size << 8 | static_cast<unsigned char>(bytes[static_cast<std::size_t>(i)]);
        if (size < 8 || size > bytes.size())
            throw std::invalid_argument("not a row of boxes");
        const auto type = bytes.substr(4, 4);
        const auto contents = bytes.substr(8, size - 8);
        const bool isMeant = !isDone && type == path.front();
        if (!isMeant)
            result.append(bytes.substr(0, size));
        else if (path.size() > 1)
            result.append(box(type, editBox(contents, path.subspan(1), edit)));
        else
            result.append(box(type, edit(contents)));
        isDone = isDone || isMeant;
        bytes.remove_prefix(size);
    }
    if (!isDone)
        throw std::invalid_argument("there is no such box");
    return result;
}

/// A movie with boxes added to the end of the sample entry of its first track.
inline std::string withSampleEntryBoxes(std::string_view movie, const std::string& added) {
    constexpr std::string_view path[] = {"moov", "trak", "mdia", "minf", "stbl", "stsd"};
    return editBox(movie, path, [&](std::string_view box) {
        // A version and the number of entries, then the entry.
        const std::string entry(box.substr(16));
        return std::string(box.substr(0, 8)) + u32(entry.size() + 8 + added.size()) +
               std::string(box.substr(12, 4)) + entry + added;
    });
}

} // namespace boxlift::media::test
