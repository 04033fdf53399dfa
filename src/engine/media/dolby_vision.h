#pragma once

#include "engine/media/av/ffmpeg.h"
#include "engine/media/box_bytes.h"

// What a track of Dolby Vision says of itself beside its samples.
namespace boxlift::media::dolby_vision {

/// The configuration box for the track's sample entry; empty when the track has none.
box_bytes::Bytes configurationBox(const AVStream& stream);

/// Whether players that do not know Dolby Vision would show wrong colours.
bool lacksPlainBase(const AVStream& stream);

} // namespace boxlift::media::dolby_vision
