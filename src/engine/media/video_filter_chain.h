#pragma once

#include <string>

#include "engine/media/video_colour.h"

namespace boxlift::media {

/// What decoded pictures are like.
struct DecodedPictures {
    AVPixelFormat format = AV_PIX_FMT_NONE;
    PictureSize size;
    VideoColour colour; ///< Complete for high range.
    bool isInterlaced = false;
};

/// The filters, in FFmpeg's notation, that bring such pictures to 8-bit 4:2:0 of `size` with square
/// pixels, in limited range.
std::string filterChain(const DecodedPictures& pictures, PictureSize size);

} // namespace boxlift::media
