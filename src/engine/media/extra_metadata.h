#pragma once

#include "engine/media/av/ffmpeg.h"
#include "engine/media/index_changes.h"
#include "model/file_type.h"

namespace boxlift::media {

/// Adds to `changes` what a file of this type can hold of the source's metadata although the
/// container's writer does not write it: QuickTime's keyed metadata everywhere (camera, place, date
/// with time zone), and in QuickTime files the tags and the cover that music players know.
void addExtraMetadata(IndexChanges& changes, FileType type, const AVFormatContext& source);

} // namespace boxlift::media
