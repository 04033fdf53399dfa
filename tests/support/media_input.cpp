#include "support/media_input.h"

#include <stdexcept>

namespace boxlift::test {

namespace {

const AVStream* findStream(const AVFormatContext& input, AVMediaType type, std::size_t number) {
    for (unsigned index = 0; index < input.nb_streams; ++index) {
        const AVStream* stream = input.streams[index];
        const bool isPicture = (stream->disposition & AV_DISPOSITION_ATTACHED_PIC) != 0;
        if (stream->codecpar->codec_type != type || isPicture) {
            continue;
        }
        if (number == 0) {
            return stream;
        }
        --number;
    }
    throw std::out_of_range("the file has no such stream");
}

libav::CodecPtr openDecoder(const AVStream& stream) {
    const AVCodec* codec =
        libav::require(avcodec_find_decoder(stream.codecpar->codec_id), "find a decoder");
    libav::CodecPtr decoder(libav::require(avcodec_alloc_context3(codec), "make a decoder"));
    libav::check(avcodec_parameters_to_context(decoder.get(), stream.codecpar), "set a decoder up");
    decoder->pkt_timebase = stream.time_base;
    decoder->thread_count = 1;
    libav::check(avcodec_open2(decoder.get(), codec, nullptr), "open a decoder");
    return decoder;
}

} // namespace

libav::InputPtr openInput(const std::filesystem::path& path) {
    AVFormatContext* context = nullptr;
    const std::string url = "file:" + path.string();
    libav::check(avformat_open_input(&context, url.c_str(), nullptr, nullptr),
                 "open " + path.string());
    libav::InputPtr input(context);
    libav::check(avformat_find_stream_info(context, nullptr), "read streams of " + path.string());
    return input;
}

bool readPacket(AVFormatContext& input, AVPacket& packet) {
    const int result = av_read_frame(&input, &packet);
    if (result == AVERROR_EOF) {
        return false;
    }
    libav::check(result, "read a packet");
    return true;
}

StreamDecoder::StreamDecoder(const std::filesystem::path& path, AVMediaType type,
                             std::size_t number)
    : m_input(openInput(path)), m_stream(findStream(*m_input, type, number)),
      m_decoder(openDecoder(*m_stream)), m_packet(libav::makePacket()),
      m_frame(libav::makeFrame()) {}

const AVFrame* StreamDecoder::next() {
    while (true) {
        const int result = avcodec_receive_frame(m_decoder.get(), m_frame.get());
        if (result == AVERROR_EOF) {
            return nullptr;
        }
        if (result != AVERROR(EAGAIN)) {
            libav::check(result, "decode a frame");
            return m_frame.get();
        }
        feed();
    }
}

void StreamDecoder::feed() {
    while (readPacket(*m_input, *m_packet)) {
        const bool isOurs = m_packet->stream_index == m_stream->index;
        const int result = isOurs ? avcodec_send_packet(m_decoder.get(), m_packet.get()) : 0;
        av_packet_unref(m_packet.get());
        libav::check(result, "decode a packet");
        if (isOurs) {
            return;
        }
    }
    libav::check(avcodec_send_packet(m_decoder.get(), nullptr), "end decoding");
}

} // namespace boxlift::test
