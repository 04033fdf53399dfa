#pragma once

#include <filesystem>
#include <span>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "model/size_option.h"
#include "model/target.h"

namespace boxlift::drive {

enum class Command { analyze, convert };

/// What the tool was asked to do.
struct CommandLine {
    Command command = Command::analyze;
    Target target = Target::mp4;
    SizeOption size = SizeOption::original;
    bool removeAudio = false;
    /// Absolute; empty for `analyze`.
    std::filesystem::path outputDir;
    /// Absolute, as given, folders not yet expanded; at least one.
    std::vector<std::filesystem::path> paths;
};

/// The command line is wrong; what() says in which way.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

inline constexpr std::string_view usageLine =
    "usage: boxlift-drive analyze PATH... | boxlift-drive convert [--target mp4|mov|m4a|aac] "
    "[--size original|p1080|p720] [--remove-audio] --output-dir DIR PATH...";

/// Reads the arguments that follow the program's name. `currentFolder` is empty when there is
/// none: relative paths are wrong then. Throws UsageError.
CommandLine parseCommandLine(std::span<const std::string_view> arguments,
                             const std::filesystem::path& currentFolder);

} // namespace boxlift::drive
