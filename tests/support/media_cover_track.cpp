#include "support/media_track.h"

#include <limits>
#include <string>

#include "support/media_picture.h"

namespace boxlift::test {

namespace {

libav::CodecPtr makeEncoder(AVFormatContext& container, const CoverSpec& spec) {
    libav::CodecPtr encoder = prepareEncoder(spec.codec, container);
    encoder->width = spec.size;
    encoder->height = spec.size;
    encoder->time_base = {1, 1};
    encoder->pix_fmt = libav::pixelFormats(*encoder->codec).front();
    openEncoder(*encoder, {});
    return encoder;
}

class CoverTrack final : public Track {
public:
    CoverTrack(AVFormatContext& container, const CoverSpec& spec)
        : m_container(container), m_encoder(makeEncoder(container, spec)),
          m_stream(addStream(container, *m_encoder, {})) {
        m_stream.disposition |= AV_DISPOSITION_ATTACHED_PIC;
    }

    /// Before anything else: containers keep the picture with their header.
    double position() const override {
        constexpr double infinity = std::numeric_limits<double>::infinity();
        return m_written ? infinity : -infinity;
    }

    void advance() override {
        PictureMaker maker({m_encoder->width, m_encoder->height, m_encoder->pix_fmt});
        const libav::FramePtr frame = maker.draw(0, 0);
        libav::check(avcodec_send_frame(m_encoder.get(), frame.get()), "encode the cover");
        libav::check(avcodec_send_frame(m_encoder.get(), nullptr), "encode the cover");
        const libav::PacketPtr packet = libav::makePacket();
        libav::check(avcodec_receive_packet(m_encoder.get(), packet.get()), "encode the cover");
        packet->pts = packet->dts = 0;
        packet->stream_index = m_stream.index;
        libav::check(av_interleaved_write_frame(&m_container, packet.get()), "write the cover");
        m_written = true;
    }

private:
    AVFormatContext& m_container;
    libav::CodecPtr m_encoder;
    AVStream& m_stream;
    bool m_written = false;
};

} // namespace

std::unique_ptr<Track> makeCoverTrack(AVFormatContext& container, const CoverSpec& spec) {
    return std::make_unique<CoverTrack>(container, spec);
}

} // namespace boxlift::test
