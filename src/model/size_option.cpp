#include "model/size_option.h"

#include <algorithm>
#include <cstddef>

namespace boxlift {

namespace {

struct Row {
    SizeOption size;
    std::string_view rawValue;
    std::string_view label;
    ExportPreset exportPreset;
};

// Indexed by the enumerator's position.
constexpr std::array<Row, allSizeOptions.size()> rows{{
    {SizeOption::original, "original", "Original size",
     ExportPreset::AVAssetExportPresetHighestQuality},
    {SizeOption::p1080, "p1080", "1080p", ExportPreset::AVAssetExportPreset1920x1080},
    {SizeOption::p720, "p720", "720p", ExportPreset::AVAssetExportPreset1280x720},
}};
static_assert(std::ranges::equal(rows, allSizeOptions, {}, &Row::size));

constexpr const Row& rowOf(SizeOption size) {
    return rows[static_cast<std::size_t>(size)];
}

} // namespace

std::string_view rawValue(SizeOption size) {
    return rowOf(size).rawValue;
}

std::optional<SizeOption> sizeOptionFromRawValue(std::string_view rawValue) {
    const auto row = std::ranges::find(rows, rawValue, &Row::rawValue);
    return row == rows.end() ? std::nullopt : std::optional(row->size);
}

std::string_view label(SizeOption size) {
    return rowOf(size).label;
}

ExportPreset exportPreset(SizeOption size) {
    return rowOf(size).exportPreset;
}

} // namespace boxlift
