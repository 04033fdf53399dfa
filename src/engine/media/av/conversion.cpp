#include "engine/media/av/conversion.h"

#include <algorithm>
#include <cmath>

namespace boxlift::media::av {

namespace {

constexpr AVRational tick{1, static_cast<int>(Time::ticksPerSecond)};
static_assert(Time::ticksPerSecond <= INT32_MAX);

double fixedPoint(std::int32_t value) {
    return static_cast<double>(value) / 65536.0;
}

std::int32_t toFixedPoint(double value) {
    const double fixed = std::clamp(value * 65536.0, -2147483647.0, 2147483647.0);
    return static_cast<std::int32_t>(std::llround(fixed));
}

} // namespace

Time toTime(std::int64_t timestamp, AVRational timeBase) {
    if (timestamp == AV_NOPTS_VALUE || timeBase.num <= 0 || timeBase.den <= 0)
        return {};
    return Time::fromTicks(av_rescale_q(timestamp, timeBase, tick));
}

std::int64_t toTimestamp(Time time, AVRational timeBase) {
    return time.isValid() ? av_rescale_q(time.ticks(), tick, timeBase) : AV_NOPTS_VALUE;
}

MediaType toMediaType(AVMediaType type) {
    switch (type) {
    case AVMEDIA_TYPE_VIDEO:
        return MediaType::video;
    case AVMEDIA_TYPE_AUDIO:
        return MediaType::audio;
    case AVMEDIA_TYPE_SUBTITLE:
        return MediaType::text;
    case AVMEDIA_TYPE_DATA:
    case AVMEDIA_TYPE_ATTACHMENT:
    case AVMEDIA_TYPE_UNKNOWN:
    case AVMEDIA_TYPE_NB:
        return MediaType::other;
    }
    return MediaType::other;
}

FourCharCode toFourCharCode(std::uint32_t codecTag) {
    return (codecTag & 0xff) << 24 | (codecTag & 0xff00) << 8 | (codecTag >> 8 & 0xff00) |
           codecTag >> 24;
}

std::uint32_t toCodecTag(FourCharCode code) {
    return toFourCharCode(code);
}

AffineTransform toTransform(const std::int32_t* displayMatrix, Size stored) {
    AffineTransform transform{fixedPoint(displayMatrix[0]),
                              fixedPoint(displayMatrix[1]),
                              fixedPoint(displayMatrix[3]),
                              fixedPoint(displayMatrix[4]),
                              0,
                              0};
    // Whatever corner lies furthest to the left and top comes to (0, 0).
    transform.tx =
        -(std::min(0.0, transform.a * stored.width) + std::min(0.0, transform.c * stored.height));
    transform.ty =
        -(std::min(0.0, transform.b * stored.width) + std::min(0.0, transform.d * stored.height));
    return transform;
}

void toDisplayMatrix(const AffineTransform& transform, std::span<std::int32_t, 9> displayMatrix) {
    const std::int32_t values[9] = {
        toFixedPoint(transform.a),  toFixedPoint(transform.b),  0,
        toFixedPoint(transform.c),  toFixedPoint(transform.d),  0,
        toFixedPoint(transform.tx), toFixedPoint(transform.ty), 1 << 30,
    };
    std::copy(std::begin(values), std::end(values), displayMatrix.begin());
}

} // namespace boxlift::media::av
