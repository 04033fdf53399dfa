#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "engine/media/av/handles.h"

namespace boxlift::media::test {

/// One value for each plane, in the format's own depth.
using PlaneValues = std::vector<int>;

/// A picture with the same value all over each plane, progressive, untagged, square pixels.
/// Planar formats only.
inline av::FramePtr makePicture(AVPixelFormat format, int width, int height,
                                const PlaneValues& values, std::int64_t pts = 0) {
    av::FramePtr frame = av::makeFrame();
    frame->format = format;
    frame->width = width;
    frame->height = height;
    frame->pts = pts;
    if (av_frame_get_buffer(frame.get(), 0) < 0)
        throw std::bad_alloc();
    const AVPixFmtDescriptor& description = *av_pix_fmt_desc_get(format);
    for (int plane = 0; plane < static_cast<int>(values.size()); ++plane) {
        const bool isChroma =
            (plane == 1 || plane == 2) && !(description.flags & AV_PIX_FMT_FLAG_RGB);
        const int rows = isChroma ? AV_CEIL_RSHIFT(height, description.log2_chroma_h) : height;
        const int value = values[static_cast<std::size_t>(plane)];
        for (int row = 0; row < rows; ++row) {
            std::uint8_t* line = frame->data[plane] + row * frame->linesize[plane];
            for (int x = 0; x < frame->linesize[plane]; ++x)
                line[x] = static_cast<std::uint8_t>(description.comp[0].depth <= 8 ? value
                                                    : x % 2                        ? value >> 8
                                                                                   : value & 0xff);
        }
    }
    return frame;
}

/// The value of a plane of an 8-bit picture.
inline int valueAt(const AVFrame& frame, int plane, int x, int y) {
    return frame.data[plane][y * frame.linesize[plane] + x];
}

/// Takes frames over and keeps them.
class FrameCollector {
public:
    std::function<void(AVFrame&)> sink() {
        return [this](AVFrame& frame) {
            av::FramePtr kept = av::makeFrame();
            av_frame_move_ref(kept.get(), &frame);
            m_frames.push_back(std::move(kept));
        };
    }
    std::size_t count() const { return m_frames.size(); }
    const AVFrame& operator[](std::size_t index) const { return *m_frames.at(index); }

private:
    std::vector<av::FramePtr> m_frames;
};

} // namespace boxlift::media::test
