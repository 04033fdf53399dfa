#pragma once

#include "engine/media/av/ffmpeg.h"
#include "engine/media/box_bytes.h"

/// Pictures of all that is around the camera, and pictures for two eyes (Google's Spherical Video
/// V2).
namespace boxlift::media::spherical {

/// The boxes for a track's sample entry that tell how its pictures are to be projected (`sv3d`) and
/// which eye sees what (`st3d`), one after the other; empty for plain pictures and for what these
/// boxes have no word for. What they tell is taken off the stream: newer muxers would tell it in
/// boxes of their own as well (`vexu`), less exactly, and newer demuxers refuse a file with both.
box_bytes::Bytes takeDescription(AVStream& stream);

/// Lets `to`, which holds the same pictures at another size, be projected as `from` is.
void copyDescription(AVStream& to, const AVStream& from);

} // namespace boxlift::media::spherical
