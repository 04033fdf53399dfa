#pragma once

#include <filesystem>

namespace boxlift::drive {

/// `path` below `currentFolder` (itself absolute) unless it is absolute already, as text alone:
/// "." and surplus slashes are dropped, ".." and links stay as they are.
std::filesystem::path absolutePath(const std::filesystem::path& path,
                                   const std::filesystem::path& currentFolder);

} // namespace boxlift::drive
