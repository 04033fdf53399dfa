#pragma once

#include "engine/media/av/ffmpeg.h"
#include "engine/media/box_bytes.h"
#include "model/file_type.h"

namespace boxlift::media::leftover_tags {

/// Items of a music player's list for those of a source's tags that the writer of files of this
/// type has no field for: under their own codes where there are such, else under their full names.
box_bytes::Bytes items(FileType type, const AVDictionary* tags);

} // namespace boxlift::media::leftover_tags
