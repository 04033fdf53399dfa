#include "engine/media/video_colour.h"

namespace boxlift::media {

namespace {

/// Larger pictures than these are taken for high definition by players, and so for BT.709.
constexpr int standardWidth = 1024;
constexpr int standardHeight = 576;

AVColorSpace customaryMatrix(PictureSize size) {
    const bool isStandard = size.width <= standardWidth && size.height <= standardHeight;
    return isStandard ? AVCOL_SPC_SMPTE170M : AVCOL_SPC_BT709;
}

template <typename Tag>
Tag firstOf(Tag own, Tag other, Tag unspecified) {
    return own == unspecified ? other : own;
}

/// The old formats that stand for "full range" by themselves.
bool isFullRangeFormat(AVPixelFormat format) {
    switch (format) {
    case AV_PIX_FMT_YUVJ420P:
    case AV_PIX_FMT_YUVJ411P:
    case AV_PIX_FMT_YUVJ422P:
    case AV_PIX_FMT_YUVJ440P:
    case AV_PIX_FMT_YUVJ444P:
        return true;
    default:
        return false;
    }
}

} // namespace

VideoColour VideoColour::of(const AVCodecParameters& parameters) {
    return {parameters.color_primaries, parameters.color_trc, parameters.color_space,
            parameters.color_range};
}

VideoColour VideoColour::of(const AVFrame& frame) {
    return {frame.color_primaries, frame.color_trc, frame.colorspace, frame.color_range};
}

void VideoColour::applyTo(AVFrame& frame) const {
    frame.color_primaries = primaries;
    frame.color_trc = transfer;
    frame.colorspace = matrix;
    frame.color_range = range;
}

VideoColour VideoColour::completedBy(const VideoColour& other) const {
    return {firstOf(primaries, other.primaries, AVCOL_PRI_UNSPECIFIED),
            firstOf(transfer, other.transfer, AVCOL_TRC_UNSPECIFIED),
            firstOf(matrix, other.matrix, AVCOL_SPC_UNSPECIFIED),
            firstOf(range, other.range, AVCOL_RANGE_UNSPECIFIED)};
}

bool VideoColour::isHighRange() const {
    return transfer == AVCOL_TRC_SMPTE2084 || transfer == AVCOL_TRC_ARIB_STD_B67;
}

bool isRgb(AVPixelFormat format) {
    const AVPixFmtDescriptor* description = av_pix_fmt_desc_get(format);
    return description && (description->flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)) != 0;
}

VideoColour encodedColour(const VideoColour& source, AVPixelFormat format, PictureSize size) {
    if (source.isHighRange())
        return {AVCOL_PRI_BT709, AVCOL_TRC_BT709, AVCOL_SPC_BT709, AVCOL_RANGE_MPEG};
    VideoColour colour = source;
    if (isRgb(format))
        colour.matrix = customaryMatrix(size);
    else if (colour.matrix == AVCOL_SPC_RGB) // A wrong tag, and no encoder would take it.
        colour.matrix = AVCOL_SPC_UNSPECIFIED;
    if (isRgb(format) || isFullRangeFormat(format) || colour.range != AVCOL_RANGE_UNSPECIFIED)
        colour.range = AVCOL_RANGE_MPEG;
    return colour;
}

VideoColour completedHighRange(const VideoColour& source, AVPixelFormat format) {
    const bool isFull = isRgb(format) || isFullRangeFormat(format);
    const AVColorSpace matrix = isRgb(format) ? AVCOL_SPC_RGB : AVCOL_SPC_BT2020_NCL;
    return source.completedBy(
        {AVCOL_PRI_BT2020, source.transfer, matrix, isFull ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG});
}

} // namespace boxlift::media
