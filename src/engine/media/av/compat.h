#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

#include "engine/media/av/ffmpeg.h"

// Where the versions of the FFmpeg libraries that we build with differ, as functions.
namespace boxlift::media::av {

/// The type of the buffer that a write callback is given.
#if LIBAVFORMAT_VERSION_MAJOR >= 61
using WriteCallbackByte = const std::uint8_t;
#else
using WriteCallbackByte = std::uint8_t;
#endif

/// A stream's side data of this kind; empty when it has none.
inline std::span<const std::uint8_t> streamSideData(const AVStream& stream,
                                                    AVPacketSideDataType type) {
#if LIBAVFORMAT_VERSION_MAJOR >= 61
    const AVPacketSideData* data = av_packet_side_data_get(
        stream.codecpar->coded_side_data, stream.codecpar->nb_coded_side_data, type);
    return data ? std::span<const std::uint8_t>(data->data, data->size)
                : std::span<const std::uint8_t>();
#else
    std::size_t size = 0;
    const std::uint8_t* data = av_stream_get_side_data(&stream, type, &size);
    return {data, data ? size : 0};
#endif
}

/// Copies all side data from stream to stream; avcodec_parameters_copy() must have been called
/// before. A negative FFmpeg code on failure.
inline int copyStreamSideData(AVStream& to, const AVStream& from) {
#if LIBAVFORMAT_VERSION_MAJOR >= 61
    (void)to;
    (void)from; // The codec parameters carry it.
#else
    for (int i = 0; i < from.nb_side_data; ++i) {
        const AVPacketSideData& data = from.side_data[i];
        std::uint8_t* copy = av_stream_new_side_data(&to, data.type, data.size);
        if (!copy)
            return AVERROR(ENOMEM);
        std::copy(data.data, data.data + data.size, copy);
    }
#endif
    return 0;
}

/// Adds (or replaces) a stream's side data; room for `size` bytes, or null.
inline std::uint8_t* newStreamSideData(AVStream& stream, AVPacketSideDataType type,
                                       std::size_t size) {
#if LIBAVFORMAT_VERSION_MAJOR >= 61
    AVPacketSideData* data = av_packet_side_data_new(
        &stream.codecpar->coded_side_data, &stream.codecpar->nb_coded_side_data, type, size, 0);
    return data ? data->data : nullptr;
#else
    return av_stream_new_side_data(&stream, type, size);
#endif
}

/// Takes a stream's side data of this kind away, if it has any.
inline void removeStreamSideData(AVStream& stream, AVPacketSideDataType type) {
#if LIBAVFORMAT_VERSION_MAJOR >= 61
    av_packet_side_data_remove(stream.codecpar->coded_side_data,
                               &stream.codecpar->nb_coded_side_data, type);
#else
    const std::span<AVPacketSideData> all(stream.side_data,
                                          static_cast<std::size_t>(stream.nb_side_data));
    const auto found = std::ranges::find(all, type, &AVPacketSideData::type);
    if (found == all.end())
        return;
    av_freep(&found->data);
    *found = all.back();
    --stream.nb_side_data;
#endif
}

inline bool isInterlaced(const AVFrame& frame) {
#if LIBAVUTIL_VERSION_MAJOR >= 59
    return (frame.flags & AV_FRAME_FLAG_INTERLACED) != 0;
#else
    return frame.interlaced_frame != 0;
#endif
}

/// The frame's length in its time base, 0 when unknown.
inline std::int64_t frameDuration(const AVFrame& frame) {
#if LIBAVUTIL_VERSION_MAJOR >= 58
    return frame.duration;
#else
    return frame.pkt_duration;
#endif
}

inline void setFrameDuration(AVFrame& frame, std::int64_t duration) {
#if LIBAVUTIL_VERSION_MAJOR >= 58
    frame.duration = duration;
#else
    frame.pkt_duration = duration;
#endif
}

/// Tells a filter graph's source what its frames are tagged with; before 7.1 only frames tell.
inline void setSourceColour(AVBufferSrcParameters& parameters, AVColorSpace matrix,
                            AVColorRange range) {
#if LIBAVFILTER_VERSION_MAJOR >= 10
    parameters.color_space = matrix;
    parameters.color_range = range;
#else
    (void)parameters;
    (void)matrix;
    (void)range;
#endif
}

#if LIBAVCODEC_VERSION_MAJOR >= 61
inline constexpr int profileH264High = AV_PROFILE_H264_HIGH;
inline constexpr int profileAacLow = AV_PROFILE_AAC_LOW;
#else
inline constexpr int profileH264High = FF_PROFILE_H264_HIGH;
inline constexpr int profileAacLow = FF_PROFILE_AAC_LOW;
#endif

} // namespace boxlift::media::av
