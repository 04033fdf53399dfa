#pragma once

#include <cstdint>

#include "engine/media/av/handles.h"

namespace boxlift::media {

/// A stretch of one track's audio in its final format, in place on the track's timeline.
struct AudioRun {
    std::int64_t position = 0; ///< Of its first sample, in samples from the timeline's zero.
    std::int64_t count = 0;    ///< Samples per channel.
    av::FramePtr frame;        ///< `count` samples; null for silence.
};

} // namespace boxlift::media
