#pragma once

#include <cstdint>

#include "engine/media/index_changes.h"
#include "engine/media/output_file.h"

namespace boxlift::media {

/// Makes changes in the index of a movie that has been written to `file` as its `size` bytes. The
/// index may grow into the first `reserved` bytes, which nothing else uses, or past the end of the
/// file where it is the last box. Throws media::Error.
void rewriteIndex(OutputFile& file, std::int64_t size, std::int64_t reserved,
                  const IndexChanges& changes);

} // namespace boxlift::media
