#include "engine/media/stretch_plan.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "engine/media/audio_stretch.h"

namespace boxlift::media {

namespace {

/// Reading and encoding even out over this much.
constexpr std::int64_t slack = 65536;

/// Each stretch but the first costs a lead more than it gives (see AudioStretch), and each seam is
/// a risk, so it should be long; but all workers' stretches lie in memory. At 44.1 kHz a lead lasts
/// sixteen seconds, which the shortest stretch is almost four times as long as, and 106 MB wait at
/// most. At lower rates the lead lasts longer and less memory is needed.
constexpr double mostSecondsWaiting = 600;
constexpr double shortestSeconds = 60;
/// More of them would only make the stretches shorter.
constexpr int mostWorkers = 8;
/// Reading takes about so much of the time that encoding takes.
constexpr double readingShare = 0.05;
/// What is said of a duration is not exact; a last stretch of some samples would be a waste.
constexpr double secondsMore = 1;

constexpr double lead = AudioStretch::lead;

StretchPlan serialPlan() {
    // Half the range, so that positions can be added to it.
    constexpr auto endless = std::numeric_limits<std::int64_t>::max() / 2;
    constexpr auto length = endless / AudioStretch::frameLength * AudioStretch::frameLength;
    return {length, length, 1, slack};
}

std::int64_t wholeFrames(double samples) {
    return static_cast<std::int64_t>(std::ceil(samples / AudioStretch::frameLength)) *
           AudioStretch::frameLength;
}

/// The second stretch can begin when the first has been read, and has a lead to encode besides: by
/// so much the first one is longer, for two workers to end at the same time.
StretchPlan parallelPlan(double samples, int stretches, int workers) {
    const std::int64_t length = wholeFrames((samples - lead) / (stretches + readingShare));
    const std::int64_t first = wholeFrames(static_cast<double>(length) * (1 + readingShare) + lead);
    return {first, length, workers, std::max(first, workers * length) + slack};
}

/// Of which none is shorter than `shortest`, in samples.
double mostStretches(double samples, double shortest) {
    return (samples - lead) / shortest - readingShare;
}

} // namespace

StretchPlan planStretches(Time duration, int sampleRate, unsigned cores) {
    const int most = static_cast<int>(std::clamp(cores, 1U, static_cast<unsigned>(mostWorkers)));
    if (!duration.isValid() || duration <= Time::zero())
        return serialPlan();
    const double seconds = duration.seconds() + secondsMore;
    const double samples = seconds * sampleRate;
    // Each worker gets as many stretches as any other.
    const auto rounds =
        static_cast<int>(std::ceil(seconds / (mostSecondsWaiting + 2 * secondsMore)));
    const auto workers = static_cast<int>(
        std::min<double>(most, mostStretches(samples, shortestSeconds * sampleRate) / rounds));
    if (workers < 2)
        return serialPlan();
    return parallelPlan(samples, rounds * workers, workers);
}

} // namespace boxlift::media
