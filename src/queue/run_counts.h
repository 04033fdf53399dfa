#pragma once

namespace boxlift {

/// How far a run has come, in jobs.
struct RunCounts {
    /// That could be converted when the run began.
    int planned = 0;
    int done = 0;
    int failed = 0;

    friend bool operator==(const RunCounts&, const RunCounts&) = default;
};

} // namespace boxlift
