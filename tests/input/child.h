#pragma once

#include <filesystem>
#include <functional>
#include <string>

namespace boxlift::test {

enum class Rights {
    asTheyAre,
    /// For root: those of a user who owns nothing. Else as they are.
    ordinary,
};

/// Runs `work` in a process of its own and returns its result; what it changes about its process
/// stays there. Throws std::runtime_error when it dies or takes longer than a minute.
std::string inChild(Rights rights, const std::function<std::string()>& work);

/// Sets the mode bits of a file or folder. Throws std::filesystem::filesystem_error.
void setMode(const std::filesystem::path& path, unsigned mode);

} // namespace boxlift::test
