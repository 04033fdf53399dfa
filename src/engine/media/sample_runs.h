#pragma once

#include <cstdint>
#include <deque>
#include <vector>

namespace boxlift::media {

/// Samples of a track that the container's writer took for fewer: each run of them for one.
struct SampleRuns {
    struct Run {
        std::uint32_t samples = 0;
        /// Of each sample but the last, which takes the rest; in the track's time base.
        std::uint32_t duration = 0;
    };

    std::vector<Run> runs;
    /// Bytes of each sample, of all runs. Very many: a list that grows without being copied.
    std::deque<std::uint32_t> sizes;
};

} // namespace boxlift::media
