#pragma once

#include <cstddef>
#include <cstdint>

#include "support/media_decode.h"

namespace boxlift::test {

/// A half-open range of samples of one channel.
struct SampleRange {
    int channel = 0;
    std::size_t begin = 0;
    /// Cut off at the end of the sound.
    std::size_t end = static_cast<std::size_t>(-1);
};

/// The amplitude of the part of the sound at one frequency: 0.5 for a sine of 0.5. Most exact over
/// whole periods.
double toneLevel(const DecodedAudio& audio, double frequency, const SampleRange& range = {});
/// The frequency of a pure tone, from its zero crossings; 0 for silence.
double toneFrequency(const DecodedAudio& audio, const SampleRange& range = {});
double rms(const DecodedAudio& audio, const SampleRange& range = {});
/// Where the largest value lies. Throws std::invalid_argument for an empty range.
std::size_t peakSample(const DecodedAudio& audio, const SampleRange& range = {});

/// The mean structural similarity of two pictures of the same size, in windows of 8 by 8: 1 for
/// equal ones. Throws std::invalid_argument for different or tiny sizes.
double ssim(const LumaFrame& first, const LumaFrame& second);
/// The number that the test picture shows (see media_pattern.h), modulo 65,536.
std::int64_t frameNumber(const LumaFrame& frame);

} // namespace boxlift::test
