#pragma once

#include <cstdint>
#include <functional>
#include <map>

#include "engine/media/index_changes.h"
#include "engine/media/output_file.h"
#include "engine/media/sample_runs.h"

namespace boxlift::media {

enum class IndexPlace { end, front };

/// A movie that has been written but for its index.
struct WrittenMovie {
    /// Bytes at the file's beginning that have been left free.
    std::int64_t room = 0;
    /// How much of the file has been written.
    std::int64_t end = 0;
    /// What belongs behind that: the rest of the media, if any is left, and then the index.
    box_bytes::Bytes tail;
    /// The samples of tracks, by their numbers, that the index knows only the runs of.
    std::map<std::uint32_t, SampleRuns> gathered{};
};

/// Writes a movie's index, with `changes` made, where it is wanted. In front it takes the room that
/// has been left; where that is too small all the media is moved. `moved` hears how much of that is
/// done, 0 to 1, and may throw to end it. Throws media::Error.
void placeIndex(OutputFile& file, WrittenMovie movie, const IndexChanges& changes, IndexPlace place,
                const std::function<void(double)>& moved);

} // namespace boxlift::media
