#pragma once

#include <functional>
#include <vector>

namespace boxlift::media {

/// One of the H.264 encoders that the libraries may have, and what it is told.
struct H264Encoder {
    enum class Scale {
        rateFactor,   ///< 0 to 51, lower is better.
        percentOfBest ///< 0 to 100, higher is better.
    };

    const char* name = "";
    Scale scale = Scale::rateFactor;
    /// Constant, on that scale.
    double quality = 0;
    /// The encoder's own name for how hard it tries; empty where it has none.
    const char* effort = "";
    /// "x264-params" that keep the encoder from AVX-512; for pictures of certain widths only.
    const char* withoutAvx512 = "";

    /// Whether the functions for AVX-512 can be used on pictures of this width, in pixels.
    static bool canUseAvx512(int width);
};

/// The encoders that are there, the one to be taken first; the next is for when it does not open.
std::vector<H264Encoder> h264Encoders(const std::function<bool(const char* name)>& isThere);

} // namespace boxlift::media
