#include "support/media_likeness.h"

#include <algorithm>
#include <cmath>

#include "support/media_decode.h"
#include "support/media_measure.h"

namespace boxlift::test {

namespace {

/// What is compared of a clip; whole ones would take the memory of all their pictures.
constexpr std::size_t comparedPictures = 40;
constexpr double sameTime = 0.002;
constexpr int smallestSide = 16;

} // namespace

bool isPlain(const ProbedStream& video) {
    const bool isProgressive = video.fieldOrder == "progressive" || video.fieldOrder == "unknown";
    const bool isStandard =
        video.colour.transfer != "smpte2084" && video.colour.transfer != "arib-std-b67";
    const bool isSquare = video.sampleAspect.numerator == video.sampleAspect.denominator ||
                          video.sampleAspect.numerator == 0;
    const bool isMeasurable = std::min(video.width, video.height) >= smallestSide;
    return isProgressive && isStandard && isSquare && isMeasurable &&
           video.pixelFormat == "yuv420p" && video.colour.matrix != "gbr";
}

std::optional<double> likeness(const std::filesystem::path& source,
                               const std::filesystem::path& output) {
    const auto after = decodeVideo(output, {.maxFrames = comparedPictures});
    if (after.empty())
        return std::nullopt;
    const auto before = decodeVideo(source, {.maxFrames = comparedPictures,
                                             .width = after.front().width,
                                             .height = after.front().height});
    // Outside a movie the source's times do not begin at zero.
    const double shift = before.empty() ? 0 : before.front().seconds - after.front().seconds;
    double sum = 0;
    int count = 0;
    for (std::size_t i = 0; i < std::min(before.size(), after.size()); ++i) {
        if (std::abs(before[i].seconds - shift - after[i].seconds) > sameTime)
            continue;
        sum += ssim(before[i], after[i]);
        ++count;
    }
    return count > 0 ? std::optional(sum / count) : std::nullopt;
}

} // namespace boxlift::test
