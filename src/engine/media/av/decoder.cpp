#include "engine/media/av/decoder.h"

#include <new>
#include <string_view>

#include "engine/media/av/check.h"

namespace boxlift::media::av {

CodecContextPtr openDecoder(const AVStream& stream, DecoderThreads threads,
                            const std::filesystem::path& path) {
    constexpr std::string_view what = "open decoder";
    const AVCodec* codec = avcodec_find_decoder(stream.codecpar->codec_id);
    if (!codec)
        check(AVERROR_DECODER_NOT_FOUND, Operation::decode, what, path);
    CodecContextPtr context(avcodec_alloc_context3(codec));
    if (!context)
        throw std::bad_alloc();
    check(avcodec_parameters_to_context(context.get(), stream.codecpar), Operation::decode, what,
          path);
    // Needed for taking priming off the time stamps.
    context->pkt_timebase = stream.time_base;
    if (threads == DecoderThreads::allCores) {
        context->thread_count = 0;
        context->thread_type = FF_THREAD_FRAME | FF_THREAD_SLICE;
    }
    check(avcodec_open2(context.get(), codec, nullptr), Operation::decode, what, path);
    return context;
}

} // namespace boxlift::media::av
