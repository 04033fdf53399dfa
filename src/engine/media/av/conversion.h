#pragma once

#include <cstdint>
#include <span>

#include "engine/media/asset.h"
#include "engine/media/av/ffmpeg.h"
#include "engine/media/time.h"

// The edge between FFmpeg's values and ours: everything is translated here and nowhere else.
namespace boxlift::media::av {

/// Invalid for AV_NOPTS_VALUE.
Time toTime(std::int64_t timestamp, AVRational timeBase);

/// AV_NOPTS_VALUE for an invalid time; rounded to the nearest.
std::int64_t toTimestamp(Time time, AVRational timeBase);

MediaType toMediaType(AVMediaType type);

/// `avc1` as FFmpeg stores it (first character lowest) to our order, and back.
FourCharCode toFourCharCode(std::uint32_t codecTag);
std::uint32_t toCodecTag(FourCharCode code);

/// A display matrix (nine 16.16 and 2.30 fixed-point numbers) for a stored picture of this size:
/// the translation is recomputed, since cameras get it wrong.
AffineTransform toTransform(const std::int32_t* displayMatrix, Size stored);
void toDisplayMatrix(const AffineTransform& transform, std::span<std::int32_t, 9> displayMatrix);

} // namespace boxlift::media::av
