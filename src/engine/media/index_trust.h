#pragma once

#include <span>

#include "engine/media/av/ffmpeg.h"

namespace boxlift::media {

/// Whether a movie's index says of the samples of its `streams` what a look into them would say,
/// and whether there is a stream that would be looked into otherwise. Only for tracks without
/// partial keys, which the library makes no difference between and others (see MovieTrack).
bool indexSparesParsing(const AVFormatContext& movie, std::span<const int> streams);

} // namespace boxlift::media
