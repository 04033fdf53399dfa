#include "support/media_boxes.h"

#include <array>
#include <fstream>
#include <stdexcept>

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

} // namespace

std::vector<Box> topLevelBoxes(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::uint64_t fileSize = std::filesystem::file_size(path);
    std::vector<Box> boxes;
    for (std::uint64_t offset = 0; offset < fileSize; offset += boxes.back().size) {
        boxes.push_back(readBox(file, offset, fileSize));
    }
    return boxes;
}

std::vector<std::string> topLevelBoxTypes(const std::filesystem::path& path) {
    std::vector<std::string> types;
    for (const Box& box : topLevelBoxes(path)) {
        types.push_back(box.type);
    }
    return types;
}

} // namespace boxlift::test
