#pragma once

#include <cstdint>

#include "engine/media/time.h"

namespace boxlift::media {

/// How a run of audio is divided into stretches that are encoded at the same time. In samples, per
/// channel.
struct StretchPlan {
    /// Of the first stretch, which begins with the file and needs no lead, and of each other one;
    /// whole numbers of frames of AAC.
    std::int64_t first = 0;
    std::int64_t length = 0;
    int workers = 1;
    std::int64_t readAhead = 0; ///< How much may be waiting to be encoded and written.
};

/// One stretch without end where the duration is short or not known, or there is one core. What
/// waits is bounded however long the duration is and however many cores there are.
StretchPlan planStretches(Time duration, int sampleRate, unsigned cores);

} // namespace boxlift::media
