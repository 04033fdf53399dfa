#include "engine/media/stereo_sounds.h"

#include <array>
#include <cmath>
#include <numbers>

namespace boxlift::test {

namespace {

constexpr double turn = 2 * std::numbers::pi;
constexpr double rate = 44100;

/// Of speech, in samples: a quarter of a second, three seconds, and what of these is voice.
constexpr std::int64_t syllable = 10 * 1024;
constexpr std::int64_t sentence = 13 * syllable;
constexpr std::int64_t voice = syllable * 7 / 10;
constexpr std::int64_t spoken = sentence * 8 / 10;

} // namespace

double noise(std::int64_t sample) {
    auto bits = static_cast<std::uint64_t>(sample) * 0x9e3779b97f4a7c15U;
    bits ^= bits >> 29;
    bits *= 0xbf58476d1ce4e5b9U;
    return static_cast<double>(bits >> 40) / (1 << 23) - 1;
}

double music(int channel, std::int64_t sample) {
    constexpr std::array<double, 4> roots{220, 261.63, 196, 329.63};
    const double time = static_cast<double>(sample) / rate;
    const double since = std::fmod(time, 0.5);
    const double root = roots.at(static_cast<std::size_t>(time * 2) % 4) * (channel == 0 ? 1 : 1.5);
    double sum = 0;
    for (int partial = 1; partial <= 8; ++partial)
        sum += std::sin(turn * root * partial * time) / partial;
    return 0.2 * std::exp(-3 * since) * sum + 0.01 * noise(sample);
}

bool isVoiced(std::int64_t sample) {
    return sample % sentence < spoken && sample % syllable < voice;
}

double speech(int, std::int64_t sample) {
    if (sample % sentence >= spoken)
        return 0;
    if (!isVoiced(sample))
        return 0.05 * noise(sample);
    const double time = static_cast<double>(sample) / rate;
    const double pitch = 110 + 30 * std::sin(turn * 0.7 * time);
    double buzz = 0;
    for (int partial = 1; partial <= 25; ++partial)
        buzz += std::sin(turn * pitch * partial * time) / (1 + std::abs(partial - 6));
    const double since = static_cast<double>(sample % syllable) / voice;
    return 0.1 * std::sin(std::numbers::pi * since) * buzz;
}

double silence(int, std::int64_t) {
    return 0;
}

media::SampleBuffer makeBuffer(const StereoSound& sound, std::int64_t position,
                               std::int64_t count) {
    media::SampleBuffer buffer;
    for (std::int64_t i = position; i < position + count; ++i)
        for (int channel = 0; channel < 2; ++channel)
            buffer.samples.push_back(
                static_cast<std::int16_t>(std::lrint(32767 * sound(channel, i))));
    return buffer;
}

} // namespace boxlift::test
