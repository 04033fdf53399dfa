#pragma once

#include <cstdint>
#include <functional>

#include "engine/media/audio_encoder.h"
#include "engine/media/sample_buffer.h"

namespace boxlift::test {

/// The value of a channel at a sample of 44,100 a second, -1 to 1.
using StereoSound = std::function<double(int channel, std::int64_t sample)>;

/// The same numbers for the same sample, from -1 to 1.
double noise(std::int64_t sample);
/// Chords that are struck twice a second and die away, different ones left and right.
double music(int channel, std::int64_t sample);
/// Syllables of a buzzing voice, each ending in a hiss; pauses between sentences.
double speech(int channel, std::int64_t sample);
/// Whether `speech` is buzzing there.
bool isVoiced(std::int64_t sample);
double silence(int channel, std::int64_t sample);

media::SampleBuffer makeBuffer(const StereoSound& sound, std::int64_t position, std::int64_t count);

} // namespace boxlift::test
