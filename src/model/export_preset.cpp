#include "model/export_preset.h"

#include <array>
#include <cstddef>

namespace boxlift {

namespace {

// Indexed by the enumerator's position.
constexpr std::array<std::string_view, 4> names{
    "AVAssetExportPresetPassthrough",
    "AVAssetExportPresetHighestQuality",
    "AVAssetExportPreset1920x1080",
    "AVAssetExportPreset1280x720",
};

} // namespace

std::string_view name(ExportPreset preset) {
    return names[static_cast<std::size_t>(preset)];
}

} // namespace boxlift
