#pragma once

#include "engine/media/box_bytes.h"
#include "engine/media/sample_runs.h"

namespace boxlift::media {

/// Makes the tables of a track (ISO/IEC 14496-12, 8.5 to 8.7 and 8.9) in a movie's index, the
/// `moov` box, which tell of each run as of one sample, tell of all samples. For tracks whose
/// samples are decoded in the order in which they are shown, each by itself. False where that
/// cannot be done, since the tables do not fit the runs or there are others; the index is as it
/// was, then.
bool expandSamples(box_bytes::Bytes& index, std::uint32_t track, const SampleRuns& samples);

} // namespace boxlift::media
