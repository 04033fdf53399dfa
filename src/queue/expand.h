#pragma once

#include <filesystem>
#include <vector>

namespace boxlift {

/// Replaces each folder by the regular files inside it, at all depths, in the order in which the
/// walk meets them: hidden entries, the contents of packages, links and entries that cannot be read
/// are left out. Everything else, a path that does not exist too, stays as it is.
std::vector<std::filesystem::path> expand(const std::vector<std::filesystem::path>& paths);

} // namespace boxlift
