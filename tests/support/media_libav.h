#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
#include <libavutil/spherical.h>
#include <libavutil/stereo3d.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

#include "support/media_spec.h"

/// The little that the generator and the probe share: ownership, errors and what differs between
/// FFmpeg's versions. For the sources of this folder only.
namespace boxlift::test::libav {

template <auto Free>
struct Deleter {
    template <typename Object>
    void operator()(Object* object) const {
        Free(&object);
    }
};
struct OutputDeleter {
    void operator()(AVFormatContext* context) const;
};
struct ScalerDeleter {
    void operator()(SwsContext* context) const { sws_freeContext(context); }
};

using PacketPtr = std::unique_ptr<AVPacket, Deleter<av_packet_free>>;
using FramePtr = std::unique_ptr<AVFrame, Deleter<av_frame_free>>;
using CodecPtr = std::unique_ptr<AVCodecContext, Deleter<avcodec_free_context>>;
using InputPtr = std::unique_ptr<AVFormatContext, Deleter<avformat_close_input>>;
using OutputPtr = std::unique_ptr<AVFormatContext, OutputDeleter>;
using ResamplerPtr = std::unique_ptr<SwrContext, Deleter<swr_free>>;
using ScalerPtr = std::unique_ptr<SwsContext, ScalerDeleter>;

/// Throws std::runtime_error when `result` is negative, else returns it.
int check(int result, const std::string& what);
/// Throws std::runtime_error when there is no object.
template <typename Object>
Object* require(Object* object, const std::string& what) {
    check(object != nullptr ? 0 : AVERROR(ENOMEM), what);
    return object;
}

PacketPtr makePacket();
FramePtr makeFrame();
ScalerPtr makeScaler(const AVFrame& from, const AVFrame& to);
/// Changes how samples are stored, neither rate nor channels.
ResamplerPtr makeConverter(const AVChannelLayout& layout, int sampleRate, AVSampleFormat from,
                           AVSampleFormat to);

/// An AVDictionary.
class Dictionary {
public:
    explicit Dictionary(const Options& options);
    ~Dictionary() { av_dict_free(&m_dictionary); }
    Dictionary(const Dictionary&) = delete;
    Dictionary& operator=(const Dictionary&) = delete;

    AVDictionary** address() { return &m_dictionary; }
    /// Throws std::invalid_argument when an option is left over.
    void requireAllUsed(const std::string& user) const;

private:
    AVDictionary* m_dictionary = nullptr;
};
Options toOptions(const AVDictionary* dictionary);

std::vector<AVPixelFormat> pixelFormats(const AVCodec& codec);
std::vector<AVSampleFormat> sampleFormats(const AVCodec& codec);
void markInterlacedTopFirst(AVFrame& frame);
/// What the container says of the stream beside its parameters; null where it says nothing.
const std::uint8_t* sideData(const AVStream& stream, AVPacketSideDataType type);
/// The nine numbers of the stream's display matrix; empty when it has none.
std::span<const std::int32_t> readDisplayMatrix(const AVStream& stream);
void writeDisplayMatrix(AVStream& stream, std::span<const std::int32_t, 9> matrix);

} // namespace boxlift::test::libav
