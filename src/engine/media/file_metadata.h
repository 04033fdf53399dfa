#pragma once

#include "engine/media/av/ffmpeg.h"
#include "engine/media/time.h"
#include "model/file_type.h"

namespace boxlift::media {

/// Carries titles, people, dates, places, camera and chapters from file to file. `start` is the
/// time in the source that becomes zero.
void copyMetadata(AVFormatContext& to, const AVFormatContext& from, Time start);

/// Whether a stream is cover art of a kind that other files can hold.
bool isCoverPicture(const AVStream& picture);

/// Whether the writer of files of this type takes a still picture as cover art.
bool canHoldPicture(FileType type, const AVStream& picture);

} // namespace boxlift::media
