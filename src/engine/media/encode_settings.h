#pragma once

#include <cstdint>

#include "model/export_preset.h"

namespace boxlift::media {

/// Whole pixels.
struct PictureSize {
    int width = 0;
    int height = 0;

    friend bool operator==(const PictureSize&, const PictureSize&) = default;
};

/// Width of a pixel by its height; anything that is not positive means square.
struct PixelAspect {
    int width = 1;
    int height = 1;
};

/// How the pictures of one track are encoded, whichever encoder does it.
struct EncodeSettings {
    PictureSize size;
    /// Bits per second that the stream may not exceed over the time that the buffer covers.
    std::int64_t rateCap = 0;
    /// Bits.
    std::int64_t buffer = 0;
};

/// The size at which a picture is encoded: square pixels, the preset's box (turned with the
/// picture), never enlarged, even. It is the size as stored: since the box is turned to how the
/// picture is displayed, the picture's own rotation changes nothing.
PictureSize fitted(PictureSize stored, PixelAspect aspect, ExportPreset preset);

/// `sourceRate`: bits per second of the source's own pictures, 0 when unknown. Not for the preset
/// that copies.
EncodeSettings encodeSettings(PictureSize stored, PixelAspect aspect, std::int64_t sourceRate,
                              ExportPreset preset);

} // namespace boxlift::media
