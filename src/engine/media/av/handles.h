#pragma once

#include <memory>

#include "engine/media/av/ffmpeg.h"

namespace boxlift::media::av {

/// Frees through a function that takes a pointer, or a pointer to a pointer.
template <auto Free>
struct Deleter {
    template <typename T>
    void operator()(T* object) const {
        if constexpr (requires { Free(&object); })
            Free(&object);
        else
            Free(object);
    }
};

using PacketPtr = std::unique_ptr<AVPacket, Deleter<av_packet_free>>;
using FramePtr = std::unique_ptr<AVFrame, Deleter<av_frame_free>>;
using InputContextPtr = std::unique_ptr<AVFormatContext, Deleter<avformat_close_input>>;
using OutputContextPtr = std::unique_ptr<AVFormatContext, Deleter<avformat_free_context>>;
using CodecContextPtr = std::unique_ptr<AVCodecContext, Deleter<avcodec_free_context>>;
using ParametersPtr = std::unique_ptr<AVCodecParameters, Deleter<avcodec_parameters_free>>;
using FilterGraphPtr = std::unique_ptr<AVFilterGraph, Deleter<avfilter_graph_free>>;
using FilterInOutPtr = std::unique_ptr<AVFilterInOut, Deleter<avfilter_inout_free>>;
using SwrPtr = std::unique_ptr<SwrContext, Deleter<swr_free>>;
using AudioFifoPtr = std::unique_ptr<AVAudioFifo, Deleter<av_audio_fifo_free>>;

/// Frees an I/O context made by avio_alloc_context() together with its buffer.
inline void freeIoContext(AVIOContext* context) {
    av_freep(&context->buffer);
    avio_context_free(&context);
}
using IoContextPtr = std::unique_ptr<AVIOContext, Deleter<freeIoContext>>;

PacketPtr makePacket();
FramePtr makeFrame();

/// A packet or frame's references, dropped at the end of a scope.
struct PacketUnref {
    AVPacket& packet;
    ~PacketUnref() { av_packet_unref(&packet); }
};
struct FrameUnref {
    AVFrame& frame;
    ~FrameUnref() { av_frame_unref(&frame); }
};

/// Options for a call that takes an AVDictionary**.
class Options {
public:
    Options() = default;
    Options(const Options&) = delete;
    Options& operator=(const Options&) = delete;
    ~Options() { av_dict_free(&m_dictionary); }

    void set(const char* key, const char* value) { av_dict_set(&m_dictionary, key, value, 0); }
    void set(const char* key, std::int64_t value) { av_dict_set_int(&m_dictionary, key, value, 0); }
    AVDictionary** address() { return &m_dictionary; }

private:
    AVDictionary* m_dictionary = nullptr;
};

} // namespace boxlift::media::av
