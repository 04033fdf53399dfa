#pragma once

#include <cstdint>

#include "support/media_libav.h"
#include "support/media_pattern.h"

namespace boxlift::test {

/// What PictureMaker makes.
struct PictureTraits {
    int width = 0;
    int height = 0;
    AVPixelFormat format = AV_PIX_FMT_YUV420P;
    bool leftHalfTransparent = false;
    /// How much later than the top field the bottom one is; 0 for frames that are one.
    double fieldSeconds = 0;
};

/// Draws the test picture in any pixel format.
class PictureMaker {
public:
    explicit PictureMaker(const PictureTraits& traits);

    /// A frame of its own each time, without a time stamp.
    libav::FramePtr draw(std::int64_t frameNumber, double seconds);

private:
    libav::FramePtr drawPlain(std::int64_t frameNumber, double seconds) const;

    PictureTraits m_traits;
    AVPixelFormat m_plainFormat;
    libav::ScalerPtr m_scaler;
};

libav::FramePtr makePictureFrame(int width, int height, AVPixelFormat format);

} // namespace boxlift::test
