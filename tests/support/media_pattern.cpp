#include "support/media_pattern.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace boxlift::test {

namespace {

constexpr double turn = 2 * std::numbers::pi;
constexpr std::uint8_t black = 16;
constexpr std::uint8_t white = 235;

struct Disc {
    double x = 0;
    double y = 0;
    double radius = 0;
};

/// What is worked out once per picture, not per pixel.
struct Scene {
    std::int64_t frameNumber = 0;
    double seconds = 0;
    int scroll = 0;
    Disc disc{};
    std::vector<int> slope{};
    std::vector<std::uint8_t> blueRow{};
};

std::uint8_t chromaWave(double turns) {
    return static_cast<std::uint8_t>(128 + 40 * std::sin(turn * turns));
}

Scene makeScene(int width, int height, std::int64_t frameNumber, double seconds) {
    Scene scene{.frameNumber = frameNumber, .seconds = seconds};
    scene.scroll = static_cast<int>(std::lround(seconds * width / 4));
    const double angle = turn * seconds / 2;
    scene.disc = {width * (0.5 + 0.3 * std::cos(angle)), height * (0.5 + 0.25 * std::sin(angle)),
                  height / 6.0};
    for (int x = 0; x < width; ++x) {
        scene.slope.push_back(50 + (100 * ((x + scene.scroll) % width)) / width);
    }
    const int chromaWidth = (width + 1) / 2;
    for (int x = 0; x < chromaWidth; ++x) {
        scene.blueRow.push_back(chromaWave(static_cast<double>(x) / chromaWidth + seconds / 4));
    }
    return scene;
}

int groundAt(const Scene& scene, int x, int y) {
    const int chequer = ((((x + scene.scroll) >> 4) ^ (y >> 4)) & 1) != 0 ? 14 : -14;
    return scene.slope[static_cast<std::size_t>(x)] + chequer;
}

void drawDisc(const Disc& disc, std::uint8_t* row, int width, int y) {
    const double down = y - disc.y;
    const double half = std::sqrt(std::max(0.0, disc.radius * disc.radius - down * down));
    const int end = std::min(width, static_cast<int>(std::ceil(disc.x + half)));
    for (int x = std::max(0, static_cast<int>(std::ceil(disc.x - half))); x < end; ++x) {
        const double across = x - disc.x;
        const double distance = std::sqrt(across * across + down * down);
        row[x] = static_cast<std::uint8_t>(170 + 40 * std::cos(turn * distance / disc.radius));
    }
}

void drawCounter(std::int64_t frameNumber, std::uint8_t* row, int width) {
    for (int cell = 1; cell <= counterBits; ++cell) {
        const bool isSet = ((frameNumber >> (counterBits - cell)) & 1) != 0;
        std::fill(row + cell * width / counterColumns, row + (cell + 1) * width / counterColumns,
                  isSet ? white : black);
    }
}

void drawLuma(const PicturePlanes& picture, const Scene& scene, int y) {
    std::uint8_t* row = picture.luma + static_cast<std::ptrdiff_t>(y) * picture.lumaStride;
    for (int x = 0; x < picture.width; ++x) {
        row[x] = static_cast<std::uint8_t>(groundAt(scene, x, y));
    }
    drawDisc(scene.disc, row, picture.width, y);
    if (y * counterRows < picture.height) {
        drawCounter(scene.frameNumber, row, picture.width);
    }
}

void drawChroma(const PicturePlanes& picture, const Scene& scene, int y) {
    std::uint8_t* blue = picture.blue + static_cast<std::ptrdiff_t>(y) * picture.blueStride;
    std::uint8_t* red = picture.red + static_cast<std::ptrdiff_t>(y) * picture.redStride;
    std::ranges::copy(scene.blueRow, blue);
    const double down = static_cast<double>(2 * y) / picture.height;
    std::fill(red, red + scene.blueRow.size(), chromaWave(down + scene.seconds / 4 + 0.25));
}

/// A well-mixed number for each counter value, the same on every computer.
std::uint64_t scramble(std::uint64_t value) {
    value += 0x9e3779b97f4a7c15U;
    value = (value ^ (value >> 30)) * 0xbf58476d1ce4e5b9U;
    value = (value ^ (value >> 27)) * 0x94d049bb133111ebU;
    return value ^ (value >> 31);
}

double noise(int channel, std::int64_t sample) {
    const auto seed = scramble(static_cast<std::uint64_t>(channel) + 1);
    const auto bits = scramble(seed ^ static_cast<std::uint64_t>(sample)) >> 11;
    return std::ldexp(static_cast<double>(bits), -52) - 1;
}

double tone(const AudioSpec& spec, int channel, std::int64_t sample) {
    const auto index = static_cast<std::size_t>(channel) % spec.frequencies.size();
    const double seconds = static_cast<double>(sample) / spec.sampleRate;
    return std::sin(turn * spec.frequencies[index] * seconds);
}

} // namespace

void drawPattern(const PicturePlanes& picture, std::int64_t frameNumber, double seconds,
                 Rows rows) {
    const Scene scene = makeScene(picture.width, picture.height, frameNumber, seconds);
    const int step = rows == Rows::all ? 1 : 2;
    const int first = rows == Rows::odd ? 1 : 0;
    for (int y = first; y < picture.height; y += step) {
        drawLuma(picture, scene, y);
    }
    for (int y = first; y < (picture.height + 1) / 2; y += step) {
        drawChroma(picture, scene, y);
    }
}

double signalValue(const AudioSpec& spec, int channel, std::int64_t sample) {
    switch (spec.signal) {
    case Signal::tone:
        return spec.amplitude * tone(spec, channel, sample);
    case Signal::noise:
        return spec.amplitude * noise(channel, sample);
    case Signal::impulses:
        return std::ranges::find(spec.impulses, sample) != spec.impulses.end() ? spec.amplitude : 0;
    case Signal::silence:
        return 0;
    }
    return 0;
}

} // namespace boxlift::test
