#pragma once

#include <cstdint>
#include <optional>

#include "engine/media/input_file.h"

namespace boxlift::media {

/// Where a sound file says that its samples lie. The demuxer cuts this to the file's real size, so
/// that a file cut short would pass for a shorter one.
struct StatedData {
    std::int64_t offset = 0;
    std::int64_t size = 0; ///< Bytes.
};

/// The data chunk of a WAVE, RF64 (EBU Tech 3306), Wave64 or Core Audio file; nothing in other
/// files, and where the size was left open by a recorder that could not go back.
std::optional<StatedData> statedData(const InputFile& file);

} // namespace boxlift::media
