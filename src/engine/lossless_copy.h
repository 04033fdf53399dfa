#pragma once

#include <filesystem>
#include <memory>
#include <stop_token>

#include "engine/converter.h"

namespace boxlift::Converter {

/// Tries to copy the compressed tracks of `source` into a new container. False when that cannot be
/// done: the reason is logged, never shown, and the caller encodes instead. Throws only what rules
/// that out as well: Cancelled, and the error that somebody else's file has taken the output's
/// name.
bool copyLosslessly(std::shared_ptr<const media::Asset> source, FileType type,
                    const std::filesystem::path& output, const Progress& progress,
                    const std::stop_token& stop, const media::Factory& factory);

} // namespace boxlift::Converter
