#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace boxlift::test {

/// A box of the MPEG-4 and QuickTime family. Sizes and places in bytes, the box's header included.
struct Box {
    std::string type{};
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
};

/// In file order. Throws std::runtime_error where the file is not a row of boxes.
std::vector<Box> topLevelBoxes(const std::filesystem::path& path);
/// Their types alone.
std::vector<std::string> topLevelBoxTypes(const std::filesystem::path& path);

/// When a movie ends by its header (`mvhd`, ISO/IEC 14496-12, 8.2.2), counted from the movie's
/// zero; nothing where there is no such header. Throws as topLevelBoxes() does.
std::optional<double> movieSeconds(const std::filesystem::path& path);

} // namespace boxlift::test
