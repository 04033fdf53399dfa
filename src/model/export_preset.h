#pragma once

#include <string_view>

namespace boxlift {

/// What an export session does with the tracks. The enumerators are the names of the platform's
/// constants.
enum class ExportPreset {
    AVAssetExportPresetPassthrough,    ///< Every sample is copied unchanged.
    AVAssetExportPresetHighestQuality, ///< Encoded again, best quality, never scaled.
    AVAssetExportPreset1920x1080,      ///< Encoded again, scaled down to fit 1920x1080.
    AVAssetExportPreset1280x720,       ///< Encoded again, scaled down to fit 1280x720.
};

/// The constant's name.
std::string_view name(ExportPreset preset);

} // namespace boxlift
