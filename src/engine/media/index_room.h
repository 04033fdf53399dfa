#pragma once

#include <cstdint>
#include <span>

#include "engine/media/av/ffmpeg.h"
#include "engine/media/expected_samples.h"

namespace boxlift::media {

/// The most bytes that the index of a movie can have that has these streams, chapters and labels,
/// and tracks of these samples.
std::int64_t largestIndex(const AVFormatContext& movie, std::span<const ExpectedSamples> tracks);

} // namespace boxlift::media
