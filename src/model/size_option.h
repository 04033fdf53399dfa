#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "model/export_preset.h"

namespace boxlift {

/// The output size that the user picks. The order is the order of the pickers.
enum class SizeOption { original, p1080, p720 };

inline constexpr std::array allSizeOptions{SizeOption::original, SizeOption::p1080,
                                           SizeOption::p720};

/// The text that stands for the size wherever it is stored or typed; also its identity.
std::string_view rawValue(SizeOption size);

/// The size with exactly this raw value (case-sensitive), if there is one.
std::optional<SizeOption> sizeOptionFromRawValue(std::string_view rawValue);

std::string_view label(SizeOption size);

/// The preset that a re-encoding export of this size uses.
ExportPreset exportPreset(SizeOption size);

} // namespace boxlift
