#include "support/media_decode.h"

#include "support/media_input.h"
#include "support/media_picture.h"

namespace boxlift::test {

namespace {

/// True when the first plane is luma in bytes, in limited range.
bool hasPlainLuma(const AVFrame& frame) {
    const AVPixFmtDescriptor* format =
        av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    constexpr std::uint64_t other = AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL;
    return (format->flags & other) == 0 && frame.color_range != AVCOL_RANGE_JPEG &&
           format->comp[0].depth == 8 && format->comp[0].step == 1 && format->comp[0].plane == 0;
}

libav::FramePtr convert(const AVFrame& frame, int width, int height) {
    libav::FramePtr converted = makePictureFrame(width, height, AV_PIX_FMT_YUV420P);
    const libav::ScalerPtr scaler = libav::makeScaler(frame, *converted);
    libav::check(sws_scale(scaler.get(), frame.data, frame.linesize, 0, frame.height,
                           converted->data, converted->linesize),
                 "convert a picture");
    return converted;
}

bool isInterlaced(const AVFrame& frame) {
#if LIBAVUTIL_VERSION_INT >= AV_VERSION_INT(58, 7, 100)
    return (frame.flags & AV_FRAME_FLAG_INTERLACED) != 0;
#else
    return frame.interlaced_frame != 0;
#endif
}

std::vector<std::uint8_t> copyLuma(const AVFrame& frame) {
    std::vector<std::uint8_t> luma;
    luma.reserve(static_cast<std::size_t>(frame.width) * static_cast<std::size_t>(frame.height));
    for (int y = 0; y < frame.height; ++y) {
        const std::uint8_t* row =
            frame.data[0] + static_cast<std::ptrdiff_t>(y) * frame.linesize[0];
        luma.insert(luma.end(), row, row + frame.width);
    }
    return luma;
}

LumaFrame toLuma(const AVFrame& frame, const VideoDecodeOptions& options, AVRational timeBase) {
    const int width = options.width > 0 ? options.width : frame.width;
    const int height = options.height > 0 ? options.height : frame.height;
    LumaFrame result{.width = width, .height = height, .isInterlaced = isInterlaced(frame)};
    result.seconds = static_cast<double>(frame.best_effort_timestamp) * av_q2d(timeBase);
    const bool asItIs = hasPlainLuma(frame) && width == frame.width && height == frame.height;
    result.luma = asItIs ? copyLuma(frame) : copyLuma(*convert(frame, width, height));
    return result;
}

} // namespace

std::uint8_t LumaFrame::at(int x, int y) const {
    return luma.at(static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                   static_cast<std::size_t>(x));
}

std::vector<LumaFrame> decodeVideo(const std::filesystem::path& path,
                                   const VideoDecodeOptions& options) {
    StreamDecoder decoder(path, AVMEDIA_TYPE_VIDEO, options.number);
    std::vector<LumaFrame> frames;
    while (frames.size() < options.maxFrames) {
        const AVFrame* frame = decoder.next();
        if (frame == nullptr) {
            break;
        }
        frames.push_back(toLuma(*frame, options, decoder.stream().time_base));
    }
    return frames;
}

} // namespace boxlift::test
