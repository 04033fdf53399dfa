#pragma once

#include "engine/media/av/ffmpeg.h"

namespace boxlift::media {

/// Makes `to` describe the same compressed samples as `from`: parameters, side data, rates, pixel
/// aspect, language and title, flags. The codec tag is left to the muxer. Throws media::Error.
void copyStreamDescription(AVStream& to, const AVStream& from);

/// Language, title and flags alone.
void copyStreamLabels(AVStream& to, const AVStream& from);

} // namespace boxlift::media
