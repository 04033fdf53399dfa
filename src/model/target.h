#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "model/file_type.h"

namespace boxlift {

/// The output format that the user picks. The order is the order of the pickers.
enum class Target { mp4, mov, m4a, aac };

inline constexpr std::array allTargets{Target::mp4, Target::mov, Target::m4a, Target::aac};

/// The text that stands for the target wherever it is stored or typed; also its identity.
std::string_view rawValue(Target target);

/// The target with exactly this raw value (case-sensitive), if there is one.
std::optional<Target> targetFromRawValue(std::string_view rawValue);

/// Long name, for the defaults picker.
std::string_view label(Target target);

/// Compact name, for the picker of a job's row.
std::string_view shortLabel(Target target);

bool isAudio(Target target);

/// Extension of the output's name, without the dot. AAC audio goes into an M4A file.
std::string_view fileExtension(Target target);

/// The container that is written.
FileType fileType(Target target);

} // namespace boxlift
