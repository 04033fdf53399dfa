#include "engine/media/h264_encoder.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace boxlift::media {

namespace {

// Quality and effort of libx264 were chosen on 23 of 83 real progressive clips, among them the
// hardest and the longest (32x18 to 1280x720, 25 kbit/s to 16 Mbit/s; six were repeated to last
// twelve seconds), by the mean structural similarity of the first forty pictures' luminance to the
// source's, which shall be 0.98. Size is the geometric mean of output by source; the modes of
// adaptive quantisation are x264's, with "veryfast".
//
//   quality  mode         lowest  mean    size  clips below 0.98
//   18       1, its own   0.9757  0.9888  1.22  4
//   17       1            0.9805  0.9904  1.36  0
//   16       1            0.9834  0.9918  1.50  0
//   18       0            0.9784  0.9912  1.45  1
//   18       2            0.9685  0.9882  1.18  4
//   18       3            0.9623  0.9878  1.20  4
//   17       2            0.9736  0.9899  1.31  1
//
// Without psychovisual optimisation the numbers are those of the first row. At quality 17 and the
// same size (1.37), "faster" and "medium" gain 0.0013 and 0.0019 of similarity and take 1.5 and 2.3
// times as much processor time. All sizes have the same quality, since pictures that need not be
// scaled down come out the same.
//
// Without AVX-512 x264 takes 5 % more processor time. Every processor that has it has the rest.
//
// The hardware encoder exists on macOS alone. It does not open where the hardware has no constant
// quality (Intel) or is out of the worker's reach. Its quality is a guess that nobody has measured.
constexpr std::array encoders{
    H264Encoder{"h264_videotoolbox", H264Encoder::Scale::percentOfBest, 70, ""},
    H264Encoder{"libx264", H264Encoder::Scale::rateFactor, 17, "veryfast",
                "asm=AVX2,FMA3,BMI2,LZCNT"},
};

/// In pixels, across a macroblock, and in macroblocks.
constexpr int macroblock = 16;
constexpr int macroblocksAtOnce = 8;

} // namespace

// x264's functions for AVX-512 take that many macroblocks of a row at once. Where a rest remains
// they read memory that nobody has written to (seen in revisions 3095 and 3108): of a clip of
// 320x240, one encoding in ten was another, by what had lain there. Of 21 widths, the 15 without a
// rest came out the same, and the others did not.
bool H264Encoder::canUseAvx512(int width) {
    return (width + macroblock - 1) / macroblock % macroblocksAtOnce == 0;
}

std::vector<H264Encoder> h264Encoders(const std::function<bool(const char* name)>& isThere) {
    std::vector<H264Encoder> found;
    std::copy_if(encoders.begin(), encoders.end(), std::back_inserter(found),
                 [&isThere](const H264Encoder& encoder) { return isThere(encoder.name); });
    return found;
}

} // namespace boxlift::media
