#pragma once

#include "engine/media/av/ffmpeg.h"
#include "engine/media/time.h"
#include "model/file_type.h"

namespace boxlift::media {

/// Carries titles, people, dates, places, camera and chapters from file to file. `start` is the
/// time in the source that becomes zero.
void copyMetadata(AVFormatContext& to, const AVFormatContext& from, Time start);

/// Whether a still picture can be cover art in a file of this type.
bool canHoldPicture(FileType type, const AVStream& picture);

} // namespace boxlift::media
