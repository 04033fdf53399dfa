#pragma once

#include <chrono>
#include <exception>
#include <optional>

#include "engine/media/asset.h"
#include "engine/media/sample_buffer.h"

namespace boxlift::media {

/// Writes one file with one AAC track. Encoding happens on the writer's own threads; append() hands
/// buffers over. The output appears under its name, whole, when and only when the writer completes;
/// otherwise nothing of it is left. Destruction of an unfinished writer cancels it.
class AssetWriter {
public:
    enum class Status { unknown, writing, completed, failed, cancelled };

    virtual ~AssetWriter() = default;

    // One thread at a time.
    virtual bool canAddAudioInput(const AacSettings& settings) const = 0;
    virtual void addAudioInput(const AacSettings& settings) = 0;
    /// Carries the asset's titles, dates, cover art and chapters into the output. Before the start.
    virtual void copyMetadata(const Asset& source) = 0;
    /// About how long the file will be, where that is known: lets the work be divided. Before the
    /// start.
    virtual void setOverallDurationHint(Time) {}
    /// False when it failed; error() may tell why.
    virtual bool startWriting() = 0;
    virtual void startSession(Time atSourceTime) = 0;
    virtual bool isReadyForMoreMediaData() const = 0;
    /// Waits until the input is ready for more, at most `timeout`; true when it is. A writer that
    /// has failed is ready: it takes buffers and drops them.
    virtual bool waitUntilReadyForMoreMediaData(std::chrono::milliseconds timeout) = 0;
    /// False when the buffer was not taken.
    virtual bool append(SampleBuffer buffer) = 0;
    virtual void markAsFinished() = 0;
    /// How far encoding has come, where it may be far behind what was appended; else nothing.
    virtual std::optional<Time> encodedTime() const { return std::nullopt; }
    /// After markAsFinished(): waits until all that was appended is encoded, at most `timeout`;
    /// true when it is, or never will be.
    virtual bool waitUntilEncoded(std::chrono::milliseconds) { return true; }
    /// Ends the file and gives it its name. Returns when that is done or has failed: see status().
    virtual void finishWriting() = 0;
    /// Any thread. Drops the output.
    virtual void cancelWriting() = 0;

    // Any thread.
    virtual Status status() const = 0;
    virtual std::exception_ptr error() const = 0;
};

} // namespace boxlift::media
