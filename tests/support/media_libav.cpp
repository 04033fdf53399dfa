#include "support/media_libav.h"

#include <array>
#include <cstring>
#include <stdexcept>

namespace boxlift::test::libav {

namespace {

#if LIBAVCODEC_VERSION_INT >= AV_VERSION_INT(61, 13, 100)
template <typename Format>
std::vector<Format> supported(const AVCodec& codec, AVCodecConfig config) {
    const void* formats = nullptr;
    int count = 0;
    check(avcodec_get_supported_config(nullptr, &codec, config, 0, &formats, &count),
          "ask an encoder for its formats");
    const auto* first = static_cast<const Format*>(formats);
    return first != nullptr ? std::vector<Format>(first, first + count) : std::vector<Format>();
}
#else
template <typename Format>
std::vector<Format> untilEnd(const Format* formats, Format end) {
    std::vector<Format> all;
    for (; formats != nullptr && *formats != end; ++formats) {
        all.push_back(*formats);
    }
    return all;
}
#endif

constexpr std::size_t matrixSize = 9 * sizeof(std::int32_t);

} // namespace

void OutputDeleter::operator()(AVFormatContext* context) const {
    avio_closep(&context->pb);
    avformat_free_context(context);
}

int check(int result, const std::string& what) {
    if (result < 0) {
        std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
        av_strerror(result, text.data(), text.size());
        throw std::runtime_error("cannot " + what + ": " + text.data());
    }
    return result;
}

PacketPtr makePacket() {
    return PacketPtr(require(av_packet_alloc(), "make a packet"));
}

FramePtr makeFrame() {
    return FramePtr(require(av_frame_alloc(), "make a frame"));
}

ScalerPtr makeScaler(const AVFrame& from, const AVFrame& to) {
    constexpr int flags = SWS_BICUBIC | SWS_ACCURATE_RND | SWS_BITEXACT;
    ScalerPtr scaler(require(sws_alloc_context(), "convert a picture"));
    const auto set = [&scaler](const char* name, int value) {
        check(av_opt_set_int(scaler.get(), name, value, 0), "convert a picture");
    };
    set("srcw", from.width);
    set("srch", from.height);
    set("src_format", from.format);
    // Tagged, where the format does not say it already.
    set("src_range", from.color_range == AVCOL_RANGE_JPEG ? 1 : 0);
    set("dstw", to.width);
    set("dsth", to.height);
    set("dst_format", to.format);
    set("sws_flags", flags);
    check(sws_init_context(scaler.get(), nullptr, nullptr), "convert a picture");
    return scaler;
}

ResamplerPtr makeConverter(const AVChannelLayout& layout, int sampleRate, AVSampleFormat from,
                           AVSampleFormat to) {
    // Only read, though not every version of the library says so.
    AVChannelLayout readable = layout;
    SwrContext* context = nullptr;
    check(swr_alloc_set_opts2(&context, &readable, to, sampleRate, &readable, from, sampleRate, 0,
                              nullptr),
          "make a sample converter");
    ResamplerPtr converter(context);
    check(swr_init(context), "start a sample converter");
    return converter;
}

Dictionary::Dictionary(const Options& options) {
    for (const auto& [key, value] : options) {
        check(av_dict_set(&m_dictionary, key.c_str(), value.c_str(), 0), "keep an option");
    }
}

void Dictionary::requireAllUsed(const std::string& user) const {
    const AVDictionaryEntry* left = av_dict_get(m_dictionary, "", nullptr, AV_DICT_IGNORE_SUFFIX);
    if (left != nullptr) {
        throw std::invalid_argument(user + " has no option " + left->key);
    }
}

Options toOptions(const AVDictionary* dictionary) {
    Options options;
    const AVDictionaryEntry* entry = nullptr;
    while ((entry = av_dict_get(dictionary, "", entry, AV_DICT_IGNORE_SUFFIX)) != nullptr) {
        options[entry->key] = entry->value;
    }
    return options;
}

#if LIBAVCODEC_VERSION_INT >= AV_VERSION_INT(61, 13, 100)
std::vector<AVPixelFormat> pixelFormats(const AVCodec& codec) {
    return supported<AVPixelFormat>(codec, AV_CODEC_CONFIG_PIX_FORMAT);
}

std::vector<AVSampleFormat> sampleFormats(const AVCodec& codec) {
    return supported<AVSampleFormat>(codec, AV_CODEC_CONFIG_SAMPLE_FORMAT);
}
#else
std::vector<AVPixelFormat> pixelFormats(const AVCodec& codec) {
    return untilEnd(codec.pix_fmts, AV_PIX_FMT_NONE);
}

std::vector<AVSampleFormat> sampleFormats(const AVCodec& codec) {
    return untilEnd(codec.sample_fmts, AV_SAMPLE_FMT_NONE);
}
#endif

void markInterlacedTopFirst(AVFrame& frame) {
#if LIBAVUTIL_VERSION_INT >= AV_VERSION_INT(58, 7, 100)
    frame.flags |= AV_FRAME_FLAG_INTERLACED | AV_FRAME_FLAG_TOP_FIELD_FIRST;
#else
    frame.interlaced_frame = 1;
    frame.top_field_first = 1;
#endif
}

const std::uint8_t* sideData(const AVStream& stream, AVPacketSideDataType type) {
#if LIBAVFORMAT_VERSION_INT >= AV_VERSION_INT(60, 15, 100)
    const AVPacketSideData* found = av_packet_side_data_get(
        stream.codecpar->coded_side_data, stream.codecpar->nb_coded_side_data, type);
    return found != nullptr ? found->data : nullptr;
#else
    return av_stream_get_side_data(&stream, type, nullptr);
#endif
}

std::span<const std::int32_t> readDisplayMatrix(const AVStream& stream) {
    const std::uint8_t* data = sideData(stream, AV_PKT_DATA_DISPLAYMATRIX);
    if (data == nullptr) {
        return {};
    }
    return {reinterpret_cast<const std::int32_t*>(data), 9};
}

void writeDisplayMatrix(AVStream& stream, std::span<const std::int32_t, 9> matrix) {
#if LIBAVFORMAT_VERSION_INT >= AV_VERSION_INT(60, 15, 100)
    const AVPacketSideData* made = av_packet_side_data_new(
        &stream.codecpar->coded_side_data, &stream.codecpar->nb_coded_side_data,
        AV_PKT_DATA_DISPLAYMATRIX, matrixSize, 0);
    std::uint8_t* data = require(made, "make a display matrix")->data;
#else
    std::uint8_t* data =
        require(av_stream_new_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, matrixSize),
                "make a display matrix");
#endif
    std::memcpy(data, matrix.data(), matrixSize);
}

} // namespace boxlift::test::libav
