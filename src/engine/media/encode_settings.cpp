#include "engine/media/encode_settings.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <utility>

namespace boxlift::media {

namespace {

/// The encoder takes no larger picture than this.
constexpr int encoderLimit = 16384;

struct PresetRow {
    ExportPreset preset;
    PictureSize box; ///< For a picture that is wider than high.
};

constexpr std::array presets{
    PresetRow{ExportPreset::AVAssetExportPresetHighestQuality, {encoderLimit, encoderLimit}},
    PresetRow{ExportPreset::AVAssetExportPreset1920x1080, {1920, 1080}},
    PresetRow{ExportPreset::AVAssetExportPreset1280x720, {1280, 720}},
};

struct CapRow {
    std::int64_t pixels; ///< For pictures of up to so many.
    std::int64_t cap;    ///< Bits per second.
};

// What players of such pictures are made for; constant quality stays well below it on all but
// noise.
constexpr std::array caps{
    CapRow{std::int64_t{1280} * 720, 10'000'000},
    CapRow{std::int64_t{1920} * 1080, 20'000'000},
    CapRow{INT64_MAX, 45'000'000},
};

/// An encoding again can show nothing that the source does not have, so it need not take much more
/// room either. The buffer starts nearly full: at 1.75 times the source's rate the output stays
/// near twice its size from ten seconds up.
constexpr std::int64_t sourceCapNumerator = 7;
constexpr std::int64_t sourceCapDenominator = 4;
/// Below this the source's rate says more about its content than about what quality takes. On
/// six such clips, whole, a cap of three times the source's rate spares 0 to 8 %, but for one of 25
/// kbit/s, which takes 3.1 instead of 5.6 times its size, and whose similarity falls from 0.993 to
/// 0.978. At twice the rate another one falls below 0.98.
constexpr std::int64_t lowestMeaningfulRate = 1'000'000;

/// Beyond this a pixel aspect is an error of the file.
constexpr int widestPixel = 10;

/// Seconds of the capped rate.
constexpr std::int64_t bufferSeconds = 2;

const PresetRow& rowOf(ExportPreset preset) {
    return *std::find_if(presets.begin(), presets.end() - 1,
                         [preset](const PresetRow& row) { return row.preset == preset; });
}

int even(std::int64_t length) {
    return static_cast<int>(std::max<std::int64_t>(2, length - length % 2));
}

PixelAspect sane(PixelAspect aspect) {
    const bool isPositive = aspect.width > 0 && aspect.height > 0;
    const bool isSane = isPositive && aspect.width / widestPixel <= aspect.height &&
                        aspect.height / widestPixel <= aspect.width;
    return isSane ? aspect : PixelAspect();
}

std::int64_t capFor(PictureSize size, std::int64_t sourceRate) {
    const std::int64_t pixels = std::int64_t{size.width} * size.height;
    const std::int64_t cap =
        std::find_if(caps.begin(), caps.end() - 1, [pixels](const CapRow& row) {
            return pixels <= row.pixels;
        })->cap;
    if (sourceRate < lowestMeaningfulRate)
        return cap;
    return std::min(cap, sourceRate / sourceCapDenominator * sourceCapNumerator);
}

} // namespace

PictureSize fitted(PictureSize stored, PixelAspect aspect, ExportPreset preset) {
    // Widths are compared as fractions over the aspect's denominator, to stay exact.
    const PixelAspect pixel = sane(aspect);
    const std::int64_t width = std::int64_t{stored.width} * pixel.width;
    const std::int64_t height = stored.height;
    PictureSize box = rowOf(preset).box;
    if (height * pixel.height > width)
        std::swap(box.width, box.height);

    if (width <= std::int64_t{box.width} * pixel.height && height <= box.height)
        return {even(width / pixel.height), even(height)};
    const bool isBoundByWidth = width * box.height >= height * pixel.height * box.width;
    if (isBoundByWidth)
        return {even(box.width), even(height * pixel.height * box.width / width)};
    return {even(width * box.height / (height * pixel.height)), even(box.height)};
}

EncodeSettings encodeSettings(PictureSize stored, PixelAspect aspect, std::int64_t sourceRate,
                              ExportPreset preset) {
    EncodeSettings settings;
    settings.size = fitted(stored, aspect, preset);
    settings.rateCap = capFor(settings.size, sourceRate);
    settings.buffer = settings.rateCap * bufferSeconds;
    return settings;
}

} // namespace boxlift::media
