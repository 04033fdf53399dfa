#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "engine/media/box_bytes.h"
#include "engine/media/time.h"

namespace boxlift::media {

/// What a movie's index is to say besides what the container's writer puts into it.
struct IndexChanges {
    struct Track {
        std::uint32_t id = 0;
        /// The last edit ends no later than here; invalid: as it is.
        Time shownEnd;
        /// Three letters of ISO 639-2, for when the writer has found no place for them.
        std::string language;
        /// What the first sample entry is called; zero: as it is.
        FourCharCode entryName = 0;
        /// Boxes for the end of the track's first sample entry; of each, unless there is one of its
        /// type.
        box_bytes::Bytes sampleEntry;

        bool empty() const {
            return !shownEnd.isValid() && language.empty() && entryName == 0 && sampleEntry.empty();
        }
    };

    std::vector<Track> tracks;
    /// Boxes for the end of the list of items that music players write, which is made where there
    /// is none.
    box_bytes::Bytes items;
    /// Boxes for the end of the index itself.
    box_bytes::Bytes movie;

    bool empty() const { return tracks.empty() && items.empty() && movie.empty(); }
    /// The most bytes that the index can grow by.
    std::size_t largestGrowth() const;
};

} // namespace boxlift::media
