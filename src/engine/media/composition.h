#pragma once

#include <cstdint>
#include <memory>

#include "engine/media/asset.h"

namespace boxlift::media {

/// A track of a composition: a whole track of a file, at its own place. Starts with the identity
/// transform. One thread until it is exported.
class MutableCompositionTrack : public AssetTrack {
public:
    /// Puts `range` of `source` at `at`. Throws when `range` is not a range of the source.
    virtual void insertTimeRange(const TimeRange& range, std::shared_ptr<const AssetTrack> source,
                                 Time at) = 0;
    virtual void setPreferredTransform(const AffineTransform& transform) = 0;
};

/// An asset that is put together from the tracks of a file. One thread until it is exported.
class MutableComposition : public Asset {
public:
    /// Lets the composition assign the track's identifier.
    static constexpr std::int32_t persistentTrackIdInvalid = 0;

    /// A new empty track, or null when the composition cannot have one of this kind.
    virtual std::shared_ptr<MutableCompositionTrack>
    addMutableTrack(MediaType type, std::int32_t preferredTrackId) = 0;
};

} // namespace boxlift::media
