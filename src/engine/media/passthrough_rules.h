#pragma once

#include <optional>

#include "engine/media/av/ffmpeg.h"
#include "model/file_type.h"
#include "model/four_char_code.h"

/// Which compressed tracks go unchanged into which container.
namespace boxlift::media::passthrough_rules {

/// Whether a file of this type can hold a track's samples and is played where such files are.
bool accepts(FileType type, const AVStream& stream, bool fromMovie);

/// Whether tracks of this kind are left out of files of this type: video out of M4A.
bool leavesOut(FileType type, AVMediaType mediaType);

/// The codec tag to write: the source's own where files of this type know it, since it tells
/// variants of a codec apart; zero leaves the choice to the muxer.
std::uint32_t codecTag(FileType type, const AVStream& source, bool fromMovie);

/// What the samples must be called although the muxer has no such tag: Dolby Vision that must not
/// pass for plain HEVC.
std::optional<FourCharCode> entryName(const AVStream& source);

} // namespace boxlift::media::passthrough_rules
