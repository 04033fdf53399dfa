#pragma once

#include "engine/media/index_changes.h"

namespace boxlift::media {

/// A movie's index (the `moov` box, header included) with `changes` made: edits cut, languages
/// named, boxes added. What cannot be read is left as it is. Grows by no more than
/// changes.largestGrowth().
box_bytes::Bytes editedIndex(box_bytes::Bytes index, const IndexChanges& changes);

} // namespace boxlift::media
