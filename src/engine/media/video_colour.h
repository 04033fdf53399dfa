#pragma once

#include "engine/media/av/ffmpeg.h"
#include "engine/media/encode_settings.h"

namespace boxlift::media {

/// What pictures say of the meaning of their numbers; each part may be unspecified.
struct VideoColour {
    AVColorPrimaries primaries = AVCOL_PRI_UNSPECIFIED;
    AVColorTransferCharacteristic transfer = AVCOL_TRC_UNSPECIFIED;
    AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;
    AVColorRange range = AVCOL_RANGE_UNSPECIFIED;

    static VideoColour of(const AVCodecParameters& parameters);
    static VideoColour of(const AVFrame& frame);
    void applyTo(AVFrame& frame) const;

    /// What is unspecified here, as `other` has it.
    VideoColour completedBy(const VideoColour& other) const;
    /// Whether the light is coded for more than standard range: PQ or HLG.
    bool isHighRange() const;

    friend bool operator==(const VideoColour&, const VideoColour&) = default;
};

/// Whether pictures of this format are red, green and blue, be it by way of a palette.
bool isRgb(AVPixelFormat format);

/// The tags of pictures once they have become 8-bit 4:2:0 of this size. High range becomes BT.709.
/// RGB gets the matrix that players take for such a size. All else keeps its tags: what is
/// untagged stays untagged. Full range becomes limited.
VideoColour encodedColour(const VideoColour& source, AVPixelFormat format, PictureSize size);

/// High-range pictures that do not tell all are taken for what they nearly always are: BT.2020.
VideoColour completedHighRange(const VideoColour& source, AVPixelFormat format);

} // namespace boxlift::media
