#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "engine/media/time.h"

namespace boxlift::media {

/// Decoded audio as a reader is asked for it.
struct LinearPcmSettings {
    int sampleRate = 44100; ///< Hz
    int channels = 2;
    int bitDepth = 16;
    bool isFloat = false;
    bool isBigEndian = false;
    bool isNonInterleaved = false;

    friend bool operator==(const LinearPcmSettings&, const LinearPcmSettings&) = default;
};

/// Encoded audio as a writer is asked for it.
struct AacSettings {
    int sampleRate = 44100; ///< Hz
    int channels = 2;
    int bitRate = 0; ///< bit/s

    friend bool operator==(const AacSettings&, const AacSettings&) = default;
};

/// A run of decoded audio: interleaved 16-bit samples in the machine's byte order.
struct SampleBuffer {
    Time presentationTimeStamp;
    int channels = 2;
    std::vector<std::int16_t> samples;

    std::size_t frameCount() const { return samples.size() / static_cast<std::size_t>(channels); }
};

} // namespace boxlift::media
