#include "support/media_picture.h"

#include <algorithm>

namespace boxlift::test {

namespace {

PicturePlanes planesOf(const AVFrame& frame) {
    return {frame.width,   frame.height,      frame.data[0],     frame.data[1],
            frame.data[2], frame.linesize[0], frame.linesize[1], frame.linesize[2]};
}

void clearLeftHalf(AVFrame& frame) {
    for (int y = 0; y < frame.height; ++y) {
        std::uint8_t* row = frame.data[3] + static_cast<std::ptrdiff_t>(y) * frame.linesize[3];
        std::fill(row, row + frame.width / 2, std::uint8_t{0});
        std::fill(row + frame.width / 2, row + frame.width, std::uint8_t{255});
    }
}

} // namespace

libav::FramePtr makePictureFrame(int width, int height, AVPixelFormat format) {
    libav::FramePtr frame = libav::makeFrame();
    frame->width = width;
    frame->height = height;
    frame->format = format;
    libav::check(av_frame_get_buffer(frame.get(), 0), "make room for a picture");
    return frame;
}

PictureMaker::PictureMaker(const PictureTraits& traits)
    : m_traits(traits),
      m_plainFormat(traits.leftHalfTransparent ? AV_PIX_FMT_YUVA420P : AV_PIX_FMT_YUV420P) {}

libav::FramePtr PictureMaker::draw(std::int64_t frameNumber, double seconds) {
    libav::FramePtr plain = drawPlain(frameNumber, seconds);
    if (m_traits.format == m_plainFormat) {
        return plain;
    }
    libav::FramePtr frame = makePictureFrame(m_traits.width, m_traits.height, m_traits.format);
    if (m_scaler == nullptr) {
        m_scaler = libav::makeScaler(*plain, *frame);
    }
    libav::check(sws_scale(m_scaler.get(), plain->data, plain->linesize, 0, plain->height,
                           frame->data, frame->linesize),
                 "convert a picture");
    return frame;
}

libav::FramePtr PictureMaker::drawPlain(std::int64_t frameNumber, double seconds) const {
    libav::FramePtr frame = makePictureFrame(m_traits.width, m_traits.height, m_plainFormat);
    const PicturePlanes planes = planesOf(*frame);
    if (m_traits.fieldSeconds > 0) {
        drawPattern(planes, frameNumber, seconds, Rows::even);
        drawPattern(planes, frameNumber, seconds + m_traits.fieldSeconds, Rows::odd);
    } else {
        drawPattern(planes, frameNumber, seconds);
    }
    if (m_traits.leftHalfTransparent) {
        clearLeftHalf(*frame);
    }
    return frame;
}

} // namespace boxlift::test
