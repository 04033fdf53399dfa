#pragma once

#include <filesystem>

#include "support/media_spec.h"

namespace boxlift::test {

/// H.264 and AAC, which every video target copies.
MediaSpec h264AndAac(double seconds = 1);

/// Makes a source in a subfolder `in` of `folder`.
std::filesystem::path makeSource(const std::filesystem::path& folder, const char* name,
                                 const MediaSpec& spec);

/// A subfolder `out` of `folder`.
std::filesystem::path makeOutputFolder(const std::filesystem::path& folder);

} // namespace boxlift::test
