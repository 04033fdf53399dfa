#pragma once

#include <string_view>

namespace boxlift {

/// The containers that can be written. The enumerators are the names of the platform's constants.
enum class FileType { AVFileTypeMPEG4, AVFileTypeQuickTimeMovie, AVFileTypeAppleM4A };

/// The constant's name.
std::string_view name(FileType type);

} // namespace boxlift
