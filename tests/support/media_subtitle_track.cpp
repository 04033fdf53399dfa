#include "support/media_track.h"

#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <string_view>
#include <utility>

namespace boxlift::test {

namespace {

constexpr int ticksPerSecond = 1000;

/// The encoders of text subtitles take their styles from such a header.
constexpr std::string_view styles =
    "[Script Info]\nScriptType: v4.00+\n\n[V4+ Styles]\n"
    "Format: Name, Fontname, Fontsize, PrimaryColour, SecondaryColour, OutlineColour, BackColour, "
    "Bold, Italic, Underline, StrikeOut, ScaleX, ScaleY, Spacing, Angle, BorderStyle, Outline, "
    "Shadow, Alignment, MarginL, MarginR, MarginV, Encoding\n"
    "Style: Default,Arial,16,&Hffffff,&Hffffff,&H0,&H0,0,0,0,0,100,100,0,0,1,1,0,2,10,10,10,1\n\n"
    "[Events]\nFormat: Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text\n";

libav::CodecPtr makeEncoder(AVFormatContext& container, const SubtitleSpec& spec) {
    libav::CodecPtr encoder = prepareEncoder(spec.codec, container);
    encoder->time_base = {1, ticksPerSecond};
    encoder->subtitle_header =
        static_cast<std::uint8_t*>(libav::require(av_mallocz(styles.size() + 1), "keep styles"));
    std::memcpy(encoder->subtitle_header, styles.data(), styles.size());
    encoder->subtitle_header_size = static_cast<int>(styles.size());
    openEncoder(*encoder, {});
    return encoder;
}

struct SubtitleDeleter {
    void operator()(AVSubtitle* subtitle) const {
        avsubtitle_free(subtitle);
        delete subtitle;
    }
};
using SubtitlePtr = std::unique_ptr<AVSubtitle, SubtitleDeleter>;

SubtitlePtr makeSubtitle(const SubtitleEvent& event) {
    SubtitlePtr subtitle(new AVSubtitle());
    subtitle->end_display_time =
        static_cast<std::uint32_t>(std::lround((event.end - event.start) * ticksPerSecond));
    const std::string line = "0,0,Default,,0,0,0,," + event.text;
    void* rects = libav::require(av_calloc(1, sizeof(AVSubtitleRect*)), "make a subtitle");
    subtitle->rects = static_cast<AVSubtitleRect**>(rects);
    subtitle->num_rects = 1;
    void* rect = libav::require(av_mallocz(sizeof(AVSubtitleRect)), "make a subtitle");
    subtitle->rects[0] = static_cast<AVSubtitleRect*>(rect);
    subtitle->rects[0]->type = SUBTITLE_ASS;
    subtitle->rects[0]->ass = libav::require(av_strdup(line.c_str()), "make a subtitle");
    return subtitle;
}

class SubtitleTrack final : public Track {
public:
    SubtitleTrack(AVFormatContext& container, const SubtitleSpec& spec)
        : m_container(container), m_events(spec.events), m_encoder(makeEncoder(container, spec)),
          m_stream(addStream(container, *m_encoder,
                             {.language = spec.language, .isDefault = spec.isDefault})) {}

    double position() const override {
        return m_next == m_events.size() ? std::numeric_limits<double>::infinity()
                                         : m_events[m_next].start;
    }

    void advance() override {
        const SubtitleEvent& event = m_events[m_next++];
        std::array<std::uint8_t, 1024> buffer{};
        const SubtitlePtr subtitle = makeSubtitle(event);
        const int size =
            libav::check(avcodec_encode_subtitle(m_encoder.get(), buffer.data(),
                                                 static_cast<int>(buffer.size()), subtitle.get()),
                         "encode a subtitle");
        const libav::PacketPtr packet = libav::makePacket();
        libav::check(av_new_packet(packet.get(), size), "make a packet");
        std::memcpy(packet->data, buffer.data(), static_cast<std::size_t>(size));
        packet->pts = packet->dts = std::llround(event.start * ticksPerSecond);
        packet->duration = subtitle->end_display_time;
        packet->flags |= AV_PKT_FLAG_KEY;
        packet->stream_index = m_stream.index;
        av_packet_rescale_ts(packet.get(), m_encoder->time_base, m_stream.time_base);
        libav::check(av_interleaved_write_frame(&m_container, packet.get()), "write a subtitle");
    }

private:
    AVFormatContext& m_container;
    std::vector<SubtitleEvent> m_events;
    libav::CodecPtr m_encoder;
    AVStream& m_stream;
    std::size_t m_next = 0;
};

} // namespace

std::unique_ptr<Track> makeSubtitleTrack(AVFormatContext& container, const SubtitleSpec& spec) {
    return std::make_unique<SubtitleTrack>(container, spec);
}

} // namespace boxlift::test
