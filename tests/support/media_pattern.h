#pragma once

#include <cstdint>

#include "support/media_spec.h"

namespace boxlift::test {

/// Three planes of 8 bits, chroma halved both ways (rounded up). Borrowed memory.
struct PicturePlanes {
    int width = 0;
    int height = 0;
    std::uint8_t* luma = nullptr;
    std::uint8_t* blue = nullptr;
    std::uint8_t* red = nullptr;
    int lumaStride = 0;
    int blueStride = 0;
    int redStride = 0;
};

enum class Rows { all, even, odd };

/// How many cells across and down the picture is divided into for the frame counter.
constexpr int counterColumns = 20;
constexpr int counterRows = 15;
/// The counter's bits, the highest first, lie in the first row of cells from the second cell on.
constexpr int counterBits = 16;

/// Draws the test picture at `seconds`: a slope and a chequered ground that scroll, a bright disc
/// that circles, and the frame's number as a row of black and white cells at the top.
void drawPattern(const PicturePlanes& picture, std::int64_t frameNumber, double seconds,
                 Rows rows = Rows::all);

/// What channel `channel` of this track plays at `sample`, before any encoder has touched it.
double signalValue(const AudioSpec& spec, int channel, std::int64_t sample);

} // namespace boxlift::test
