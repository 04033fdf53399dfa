#pragma once

#include <exception>
#include <memory>
#include <optional>
#include <span>

#include "engine/media/asset.h"
#include "engine/media/sample_buffer.h"

namespace boxlift::media {

/// Decodes audio tracks of an asset and mixes them onto one timeline whose zero is the asset's:
/// a late start or a gap is silence, several tracks are summed and clipped, the end is the edited
/// one. One thread at a time, except where said.
class AssetReader {
public:
    enum class Status { unknown, reading, completed, failed, cancelled };

    virtual ~AssetReader() = default;

    /// Whether these tracks can be decoded and mixed to these settings.
    virtual bool canAddAudioMix(std::span<const std::shared_ptr<const AssetTrack>> tracks,
                                const LinearPcmSettings& settings) const = 0;
    virtual void addAudioMix(std::span<const std::shared_ptr<const AssetTrack>> tracks,
                             const LinearPcmSettings& settings) = 0;
    /// False when it failed; error() may tell why.
    virtual bool startReading() = 0;
    /// The next buffer, of any size above zero; nothing at the end, whatever the reason: see
    /// status().
    virtual std::optional<SampleBuffer> copyNextSampleBuffer() = 0;
    /// Any thread. A call that is under way returns soon, with nothing.
    virtual void cancelReading() = 0;

    // Any thread.
    virtual Status status() const = 0;
    virtual std::exception_ptr error() const = 0;
};

} // namespace boxlift::media
