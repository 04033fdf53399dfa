#include "support/media_track.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <utility>

#include "support/media_generator.h"
#include "support/media_picture.h"

namespace boxlift::test {

namespace {

/// Frames of a variable rate begin at 0, 1, 4, 5, 8, 9... halves of a frame's time.
constexpr std::int64_t variableCycle = 4;

/// In the encoder's time base.
std::int64_t frameTicks(const VideoSpec& spec, std::int64_t index) {
    return spec.variableFrameRate ? index / 2 * variableCycle + index % 2 : index;
}

AVRational timeBase(const VideoSpec& spec) {
    const int perFrame = spec.variableFrameRate ? 2 : 1;
    return {spec.frameRate.denominator, spec.frameRate.numerator * perFrame};
}

StreamEncoder::DurationOf durationOf(const VideoSpec& spec) {
    if (!spec.variableFrameRate) {
        return [](std::int64_t) { return 1; };
    }
    return [](std::int64_t ticks) { return ticks % variableCycle == 0 ? 1 : 3; };
}

AVPixelFormat choosePixelFormat(const VideoSpec& spec, const AVCodec& codec) {
    if (!spec.pixelFormat.empty()) {
        return av_get_pix_fmt(spec.pixelFormat.c_str());
    }
    const auto formats = libav::pixelFormats(codec);
    const bool anyOrPlain = formats.empty() || std::ranges::count(formats, AV_PIX_FMT_YUV420P) > 0;
    // The JPEG encoder lists limited range but wants full range first.
    const bool wantsFullRange = !formats.empty() && formats.front() == AV_PIX_FMT_YUVJ420P;
    return anyOrPlain && !wantsFullRange ? AV_PIX_FMT_YUV420P : formats.front();
}

template <typename Value>
void tag(Value& property, int (*fromName)(const char*), const std::string& name) {
    if (!name.empty()) {
        property = static_cast<Value>(libav::check(fromName(name.c_str()), "tag with " + name));
    }
}

void tagColours(AVCodecContext& encoder, const ColourTags& colour) {
    tag(encoder.color_primaries, av_color_primaries_from_name, colour.primaries);
    tag(encoder.color_trc, av_color_transfer_from_name, colour.transfer);
    tag(encoder.colorspace, av_color_space_from_name, colour.matrix);
    tag(encoder.color_range, av_color_range_from_name, colour.range);
}

void configurePicture(AVCodecContext& encoder, const VideoSpec& spec) {
    encoder.width = spec.width;
    encoder.height = spec.height;
    encoder.pix_fmt = choosePixelFormat(spec, *encoder.codec);
    encoder.sample_aspect_ratio = {spec.sampleAspect.numerator, spec.sampleAspect.denominator};
    tagColours(encoder, spec.colour);
    if (spec.interlaced) {
        encoder.flags |= AV_CODEC_FLAG_INTERLACED_DCT | AV_CODEC_FLAG_INTERLACED_ME;
        encoder.field_order = AV_FIELD_TT;
    }
}

Options withDefaults(const VideoSpec& spec) {
    Options options = spec.encoderOptions;
    if (spec.codec == "libx264" || spec.codec == "libx265") {
        options.emplace("preset", "veryfast");
    }
    if (spec.codec == "libx265") {
        // Quiet, and with no threads that race.
        std::string& own = options["x265-params"];
        own = "log-level=error:pools=none:frame-threads=1" + (own.empty() ? own : ":" + own);
    }
    return options;
}

libav::CodecPtr makeEncoder(AVFormatContext& container, const VideoSpec& spec) {
    libav::CodecPtr encoder = prepareEncoder(spec.codec, container);
    configurePicture(*encoder, spec);
    encoder->time_base = timeBase(spec);
    encoder->framerate = {spec.frameRate.numerator, spec.frameRate.denominator};
    encoder->gop_size = spec.keyFrameInterval;
    encoder->max_b_frames = spec.bFrames;
    if (spec.bitRate > 0) {
        encoder->bit_rate = spec.bitRate;
    }
    openEncoder(*encoder, withDefaults(spec));
    return encoder;
}

void turn(AVStream& stream, const DisplayMatrix& matrix) {
    const auto fixed = [](double value) {
        return static_cast<std::int32_t>(std::llround(value * 65536));
    };
    const std::array<std::int32_t, 9> numbers = {fixed(matrix.a),  fixed(matrix.b),  0,
                                                 fixed(matrix.c),  fixed(matrix.d),  0,
                                                 fixed(matrix.tx), fixed(matrix.ty), 1 << 30};
    libav::writeDisplayMatrix(stream, numbers);
}

class VideoTrack final : public Track {
public:
    VideoTrack(AVFormatContext& container, const VideoSpec& spec, double seconds)
        : m_spec(spec), m_encoder(container, makeEncoder(container, spec),
                                  {.codecTag = spec.codecTag,
                                   .language = spec.language,
                                   .isDefault = spec.isDefault,
                                   .startSeconds = spec.startSeconds},
                                  durationOf(spec)),
          m_pictures({spec.width, spec.height, m_encoder.context().pix_fmt,
                      spec.leftHalfTransparent, spec.interlaced ? frameSeconds() / 2 : 0}),
          m_frameCount(std::llround(seconds / frameSeconds())) {
        AVStream& stream = m_encoder.stream();
        stream.avg_frame_rate = m_encoder.context().framerate;
        if (const auto matrix = displayMatrix(spec)) {
            turn(stream, *matrix);
        }
    }

    double position() const override {
        return m_finished ? std::numeric_limits<double>::infinity()
                          : m_spec.startSeconds + pictureSeconds();
    }

    void advance() override {
        m_finished = m_index == m_frameCount;
        if (m_finished) {
            m_encoder.encode(nullptr);
            return;
        }
        const libav::FramePtr frame = m_pictures.draw(m_index, pictureSeconds());
        frame->pts = frameTicks(m_spec, m_index);
        frame->sample_aspect_ratio = m_encoder.context().sample_aspect_ratio;
        if (m_spec.interlaced) {
            libav::markInterlacedTopFirst(*frame);
        }
        m_encoder.encode(frame.get());
        ++m_index;
    }

private:
    double frameSeconds() const {
        return static_cast<double>(m_spec.frameRate.denominator) / m_spec.frameRate.numerator;
    }
    double pictureSeconds() const {
        return static_cast<double>(frameTicks(m_spec, m_index)) * av_q2d(timeBase(m_spec));
    }

    VideoSpec m_spec;
    StreamEncoder m_encoder;
    PictureMaker m_pictures;
    std::int64_t m_frameCount;
    std::int64_t m_index = 0;
    bool m_finished = false;
};

} // namespace

std::unique_ptr<Track> makeVideoTrack(AVFormatContext& container, const VideoSpec& spec,
                                      double seconds) {
    return std::make_unique<VideoTrack>(container, spec, seconds);
}

} // namespace boxlift::test
