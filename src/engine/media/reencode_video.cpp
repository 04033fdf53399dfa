#include "engine/media/reencode_video.h"

#include <array>
#include <cmath>
#include <cstring>
#include <new>
#include <span>

#include "engine/media/av/check.h"
#include "engine/media/av/compat.h"
#include "engine/media/av/conversion.h"
#include "engine/media/error.h"

namespace boxlift::media {

namespace {

using Matrix = std::array<std::int32_t, 9>;

/// The libraries' guesses change nothing, but take no constant.
AVFormatContext* mutableContext(const PacketSource& source) {
    return const_cast<AVFormatContext*>(&source.context());
}

PixelAspect pixelAspect(const PacketSource& source, int stream) {
    const AVRational aspect = av_guess_sample_aspect_ratio(
        mutableContext(source), source.context().streams[stream], nullptr);
    return {aspect.num, aspect.den};
}

std::optional<Matrix> orientationOf(const AVStream& stream,
                                    const std::optional<AffineTransform>& transform) {
    Matrix matrix{};
    if (transform) {
        av::toDisplayMatrix(*transform, matrix);
        return matrix;
    }
    const auto data = av::streamSideData(stream, AV_PKT_DATA_DISPLAYMATRIX);
    if (data.size() < sizeof(matrix))
        return std::nullopt;
    std::memcpy(matrix.data(), data.data(), sizeof(matrix));
    return matrix;
}

/// Length one for either axis: what else a matrix stretches is in the pixels by now.
void normalise(AffineTransform& transform) {
    const double x = std::hypot(transform.a, transform.b);
    const double y = std::hypot(transform.c, transform.d);
    if (x <= 0 || y <= 0) {
        transform = {};
        return;
    }
    transform.a /= x;
    transform.b /= x;
    transform.c /= y;
    transform.d /= y;
}

} // namespace

std::int64_t sourceVideoRate(const AVFormatContext& context, const AVStream& stream) {
    // What is left of the whole file's rate bounds the stream's, whose own claim may be a maximum.
    std::int64_t rest = context.bit_rate;
    for (const AVStream* other : std::span(context.streams, context.nb_streams))
        if (other != &stream)
            rest -= other->codecpar->bit_rate;
    const std::int64_t own = stream.codecpar->bit_rate;
    if (own <= 0 || rest <= 0)
        return std::max<std::int64_t>({own, rest, 0});
    return std::min(own, rest);
}

ReencodePipeline::VideoStages makeVideoStages(const PacketSource& source, int index,
                                              ExportPreset preset) {
    const AVStream& stream = source.stream(index);
    const AVCodecParameters& parameters = *stream.codecpar;
    ReencodePipeline::VideoStages stages;
    stages.decoder = std::make_unique<VideoDecoder>(stream, source.path());
    if (parameters.width <= 0 || parameters.height <= 0)
        throw Error(ErrorKind::cannotDecode, "decode video", source.path(),
                    "the pictures' size is unknown");
    const EncodeSettings settings =
        encodeSettings({parameters.width, parameters.height}, pixelAspect(source, index),
                       sourceVideoRate(source.context(), stream), preset);
    const VideoColour tags = VideoColour::of(parameters);
    VideoEncoder::Input input;
    input.timeBase = stream.time_base;
    input.frameRate =
        av_guess_frame_rate(mutableContext(source), source.context().streams[index], nullptr);
    input.colour =
        encodedColour(tags, static_cast<AVPixelFormat>(parameters.format), settings.size);
    if (source.isDeclared())
        input.end = av::toTimestamp(source.range(index).end(), stream.time_base);
    stages.filter =
        std::make_unique<VideoFilter>(settings.size, tags, stream.time_base, source.path());
    stages.encoder = std::make_unique<VideoEncoder>(settings, input, source.path());
    return stages;
}

void setOrientation(AVStream& to, const AVStream& from,
                    const std::optional<AffineTransform>& transform) {
    const std::optional<Matrix> source = orientationOf(from, transform);
    if (!source)
        return;
    const Size size{static_cast<double>(to.codecpar->width),
                    static_cast<double>(to.codecpar->height)};
    AffineTransform turn = av::toTransform(source->data(), size);
    normalise(turn);
    Matrix matrix{};
    av::toDisplayMatrix(turn, matrix);
    // Once more for the place, which follows from the turn.
    av::toDisplayMatrix(av::toTransform(matrix.data(), size), matrix);
    std::uint8_t* data = av::newStreamSideData(to, AV_PKT_DATA_DISPLAYMATRIX, sizeof(matrix));
    if (!data)
        throw std::bad_alloc();
    std::memcpy(data, matrix.data(), sizeof(matrix));
}

} // namespace boxlift::media
