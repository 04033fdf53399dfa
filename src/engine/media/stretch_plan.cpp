#include "engine/media/stretch_plan.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace boxlift::media {

namespace {

constexpr std::int64_t frameLength = 1024;
/// Reading and encoding even out over this much.
constexpr std::int64_t slack = 65536;

/// Each stretch but the first costs some sixteen seconds more than it gives (see AudioStretch), and
/// each seam is a risk, so it should be many times as long; but all workers' stretches lie in
/// memory, 106 MB of them.
constexpr double mostSecondsWaiting = 600;
constexpr double shortestSeconds = 60;
/// More of them would only make the stretches shorter.
constexpr int mostWorkers = 8;
/// What is said of a duration is not exact; a last stretch of some samples would be a waste.
constexpr double secondsMore = 1;

StretchPlan serialPlan() {
    // Half the range, so that positions can be added to it.
    constexpr auto endless = std::numeric_limits<std::int64_t>::max() / 2;
    return {endless / frameLength * frameLength, 1, slack};
}

StretchPlan parallelPlan(double secondsPerStretch, int sampleRate, int workers) {
    const double frames = std::ceil(secondsPerStretch * sampleRate / frameLength);
    const std::int64_t length = static_cast<std::int64_t>(frames) * frameLength;
    return {length, workers, workers * length + slack};
}

} // namespace

StretchPlan planStretches(Time duration, int sampleRate, unsigned cores) {
    const int most = static_cast<int>(std::clamp(cores, 1U, static_cast<unsigned>(mostWorkers)));
    if (!duration.isValid())
        return serialPlan();
    const double seconds = duration.seconds() + secondsMore;
    const auto workers = static_cast<int>(std::min<double>(most, seconds / shortestSeconds));
    if (workers < 2)
        return serialPlan();
    // Each worker gets as many stretches as any other.
    const double rounds = std::ceil(seconds / (mostSecondsWaiting + 2 * secondsMore));
    return parallelPlan(seconds / (rounds * workers), sampleRate, workers);
}

} // namespace boxlift::media
