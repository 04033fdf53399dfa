#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "model/media_info.h"
#include "model/target.h"

namespace boxlift {

/// Why this file cannot be converted to this target, as a sentence for the user; nothing when it
/// can.
std::optional<std::string> blocker(const MediaInfo& info, Target target);

/// The target that a file really takes: a file without video never keeps a video target, it is
/// switched to `m4a`.
Target targetFor(const MediaInfo& info, Target wanted);

/// The file name without its extension (what follows its last dot); never empty, so that
/// ".hidden" stays ".hidden". `fileName` is a name, not a path; any bytes.
std::string baseName(std::string_view fileName);

/// The extension of a file name: what follows its last dot, empty when there is none.
std::string_view pathExtension(std::string_view fileName);

/// The first free name of "base.ext", "base 2.ext", "base 3.ext"… where `isTaken` says whether a
/// name is in use in the output folder.
std::string outputName(std::string_view inputFileName, Target target,
                       const std::function<bool(const std::string&)>& isTaken);

} // namespace boxlift
