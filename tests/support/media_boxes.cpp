#include "support/media_boxes.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <stdexcept>
#include <string_view>

namespace boxlift::test {

namespace {

constexpr std::uint64_t headerSize = 8;

std::uint64_t readNumber(std::istream& file, std::size_t width) {
    std::uint64_t value = 0;
    for (std::size_t index = 0; index < width; ++index) {
        value = (value << 8) | static_cast<std::uint64_t>(file.get() & 0xff);
    }
    return value;
}

Box readBox(std::istream& file, std::uint64_t offset, std::uint64_t fileSize) {
    file.seekg(static_cast<std::streamoff>(offset));
    Box box{.offset = offset, .size = readNumber(file, 4)};
    std::array<char, 4> type{};
    file.read(type.data(), type.size());
    box.type.assign(type.data(), type.size());
    if (box.size == 1) {
        box.size = readNumber(file, 8);
    } else if (box.size == 0) {
        box.size = fileSize - offset;
    }
    if (!file || box.size < headerSize || box.size > fileSize - offset) {
        throw std::runtime_error("not a box at byte " + std::to_string(offset));
    }
    return box;
}

std::vector<Box> readBoxes(std::istream& file, std::uint64_t begin, std::uint64_t end) {
    std::vector<Box> boxes;
    for (std::uint64_t offset = begin; offset < end; offset += boxes.back().size) {
        boxes.push_back(readBox(file, offset, end));
    }
    return boxes;
}

const Box* find(const std::vector<Box>& boxes, std::string_view type) {
    const auto found = std::ranges::find(boxes, type, &Box::type);
    return found == boxes.end() ? nullptr : &*found;
}

/// From a box that begins with its version.
double readDuration(std::istream& file, const Box& header) {
    file.seekg(static_cast<std::streamoff>(header.offset + headerSize));
    const std::size_t width = readNumber(file, 1) == 1 ? 8 : 4;
    // Flags and two dates.
    file.seekg(static_cast<std::streamoff>(3 + 2 * width), std::ios::cur);
    const std::uint64_t ticksPerSecond = readNumber(file, 4);
    const std::uint64_t ticks = readNumber(file, width);
    return static_cast<double>(ticks) / static_cast<double>(ticksPerSecond);
}

} // namespace

std::vector<Box> topLevelBoxes(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return readBoxes(file, 0, std::filesystem::file_size(path));
}

std::vector<std::string> topLevelBoxTypes(const std::filesystem::path& path) {
    std::vector<std::string> types;
    for (const Box& box : topLevelBoxes(path)) {
        types.push_back(box.type);
    }
    return types;
}

std::optional<double> movieSeconds(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    const auto boxes = readBoxes(file, 0, std::filesystem::file_size(path));
    const Box* movie = find(boxes, "moov");
    if (!movie)
        return std::nullopt;
    const auto parts = readBoxes(file, movie->offset + headerSize, movie->offset + movie->size);
    const Box* header = find(parts, "mvhd");
    return header ? std::optional(readDuration(file, *header)) : std::nullopt;
}

} // namespace boxlift::test
