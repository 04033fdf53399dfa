#pragma once

#include "engine/media/box_bytes.h"

// Where a movie's index says that its media lies (ISO/IEC 14496-12, 8.7.5), for media that moves.
namespace boxlift::media::chunk_places {

/// Gives 64 bits to each table that has a place beyond `largest` in 32. The index, a `moov` box,
/// grows; nothing moves.
void widen(box_bytes::Bytes& index, std::uint64_t largest);

/// Adds `by` bytes to every place. Those of 32 bits must have room for it.
void move(box_bytes::Bytes& index, std::uint64_t by);

} // namespace boxlift::media::chunk_places
