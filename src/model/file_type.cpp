#include "model/file_type.h"

#include <array>
#include <cstddef>

namespace boxlift {

namespace {

// Indexed by the enumerator's position.
constexpr std::array<std::string_view, 3> names{
    "AVFileTypeMPEG4",
    "AVFileTypeQuickTimeMovie",
    "AVFileTypeAppleM4A",
};

} // namespace

std::string_view name(FileType type) {
    return names[static_cast<std::size_t>(type)];
}

} // namespace boxlift
