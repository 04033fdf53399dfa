#include "engine/media/time.h"

#include <cmath>

namespace boxlift::media {

namespace {

// The product of two 64-bit values; a GNU type that gcc and clang share.
__extension__ using Wide = __int128;

std::int64_t rescale(std::int64_t value, std::int64_t to, std::int64_t from) {
    const Wide product = static_cast<Wide>(value) * to;
    const Wide half = from / 2;
    return static_cast<std::int64_t>((product + (product < 0 ? -half : half)) / from);
}

} // namespace

Time Time::fromSeconds(double seconds) {
    const double ticks = seconds * static_cast<double>(ticksPerSecond);
    // 2^62: half of the range, so that sums stay inside it.
    if (!std::isfinite(ticks) || std::abs(ticks) > 4.6e18)
        return {};
    return fromTicks(std::llround(ticks));
}

Time Time::fromRate(std::int64_t value, std::int64_t perSecond) {
    return fromTicks(rescale(value, ticksPerSecond, perSecond));
}

double Time::seconds() const {
    if (!isValid())
        return std::numeric_limits<double>::quiet_NaN();
    return static_cast<double>(m_ticks) / static_cast<double>(ticksPerSecond);
}

std::int64_t Time::toRate(std::int64_t perSecond) const {
    return rescale(m_ticks, perSecond, ticksPerSecond);
}

} // namespace boxlift::media
