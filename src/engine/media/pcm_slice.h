#pragma once

#include <cstdint>
#include <memory>

#include "engine/media/audio_run.h"
#include "engine/media/sample_buffer.h"

namespace boxlift::media {

/// A part of a buffer of decoded audio, in place on a timeline that counts samples. Buffers are
/// shared, not copied.
struct PcmSlice {
    std::shared_ptr<const SampleBuffer> buffer;
    std::int64_t first = 0;    ///< Of the buffer's samples, per channel.
    std::int64_t position = 0; ///< Of that sample on the timeline.
    std::int64_t count = 0;

    std::int64_t end() const { return position + count; }
};

/// What of a slice lies from `begin` to before `end`; empty where nothing does.
PcmSlice clip(const PcmSlice& slice, std::int64_t begin, std::int64_t end);

/// Interleaved 16 bits to planes of floating point, as the encoder takes them.
AudioRun toRun(const PcmSlice& slice);

} // namespace boxlift::media
