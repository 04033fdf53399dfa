#pragma once

#include <optional>
#include <string_view>

#include "model/file_type.h"
#include "model/media_info.h"

/// What is done with the bytes of files that may be broken: the engine's own operations, in this
/// process, on files that live in memory. Errors meant for people are an outcome like any other;
/// everything else is thrown on.
namespace boxlift::test {

/// Opens and analyses; nothing when the file is refused.
std::optional<MediaInfo> analyzeBytes(std::string_view file);

/// Opens and copies all tracks, or the video alone, into another container. Whether that succeeded.
bool copyBytes(std::string_view file, FileType type, bool removesAudio);

/// Opens, decodes and mixes all sound, and makes it AAC. Whether that succeeded.
bool transcodeBytes(std::string_view file);

/// What a file of these bytes is copied to: every container for some of them.
FileType typeFor(std::size_t number);

} // namespace boxlift::test
