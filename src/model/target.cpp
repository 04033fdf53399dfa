#include "model/target.h"

#include <algorithm>
#include <cstddef>

namespace boxlift {

namespace {

struct Row {
    Target target;
    std::string_view rawValue;
    std::string_view label;
    std::string_view shortLabel;
    bool isAudio;
    std::string_view fileExtension;
    FileType fileType;
};

// Indexed by the enumerator's position.
constexpr std::array<Row, allTargets.size()> rows{{
    {Target::mp4, "mp4", "MP4 (H.264 + AAC)", "MP4", false, "mp4", FileType::AVFileTypeMPEG4},
    {Target::mov, "mov", "MOV", "MOV", false, "mov", FileType::AVFileTypeQuickTimeMovie},
    {Target::m4a, "m4a", "M4A audio", "M4A", true, "m4a", FileType::AVFileTypeAppleM4A},
    // Not a bare .aac file: only a container keeps the duration and the encoder's delay.
    {Target::aac, "aac", "AAC audio only (128k)", "AAC 128k", true, "m4a",
     FileType::AVFileTypeAppleM4A},
}};
static_assert(std::ranges::equal(rows, allTargets, {}, &Row::target));

constexpr const Row& rowOf(Target target) {
    return rows[static_cast<std::size_t>(target)];
}

} // namespace

std::string_view rawValue(Target target) {
    return rowOf(target).rawValue;
}

std::optional<Target> targetFromRawValue(std::string_view rawValue) {
    const auto row = std::ranges::find(rows, rawValue, &Row::rawValue);
    return row == rows.end() ? std::nullopt : std::optional(row->target);
}

std::string_view label(Target target) {
    return rowOf(target).label;
}

std::string_view shortLabel(Target target) {
    return rowOf(target).shortLabel;
}

bool isAudio(Target target) {
    return rowOf(target).isAudio;
}

std::string_view fileExtension(Target target) {
    return rowOf(target).fileExtension;
}

FileType fileType(Target target) {
    return rowOf(target).fileType;
}

} // namespace boxlift
