#pragma once

#include <filesystem>

#include "model/convert_error.h"

/// What analysis says of files that it does not describe. Any thread; needs no media library.
namespace boxlift::Converter {

/// Throws ConvertError for a file whose extension is that of a format that is refused without a
/// look.
void refuseUnsupported(const std::filesystem::path& url);

/// The failure of every other file that cannot be analysed.
ConvertError cannotOpen();

} // namespace boxlift::Converter
