#pragma once

#include <optional>

#include "engine/media/av/ffmpeg.h"
#include "model/four_char_code.h"

/// What the codecs of tracks are called: four-character codes.
namespace boxlift::media::codec_codes {

/// The code of a track. Video in a movie keeps the code of its sample entry (ISO/IEC 14496-12,
/// 8.5.2); elsewhere, and for sound everywhere, it is the codec's own. Absent when nothing is
/// known.
std::optional<FourCharCode> codeOf(const AVCodecParameters& parameters, bool isMovie);

} // namespace boxlift::media::codec_codes
