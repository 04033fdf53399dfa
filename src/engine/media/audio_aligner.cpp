#include "engine/media/audio_aligner.h"

#include <algorithm>

namespace boxlift::media {

namespace {

constexpr Time tolerance = Time::fromTicks(Time::ticksPerSecond / 200);
constexpr Time longJump = Time::fromTicks(10 * Time::ticksPerSecond);
/// About a hundred years: beyond it a stamp is garbage.
constexpr Time garbage = Time::fromTicks(std::int64_t{1} << 61);

constexpr Time absolute(Time time) {
    return time < Time::zero() ? Time::zero() - time : time;
}

} // namespace

Time AudioAligner::expected() const {
    return m_count == 0 ? m_anchor : m_anchor + Time::fromRate(m_count, m_sampleRate);
}

void AudioAligner::begin(Time at) {
    m_anchor = at;
    m_count = 0;
    m_hasBegun = true;
}

AudioAligner::Placement AudioAligner::place(Time at, std::int64_t count, int sampleRate) {
    if (m_sampleRate != sampleRate) {
        m_anchor = expected();
        m_count = 0;
        m_sampleRate = sampleRate;
    }
    if (!at.isValid() || absolute(at) > garbage)
        at = expected();
    else
        at = at + m_shift;
    const Placement placement = m_hasBegun ? placeNext(at, count) : placeFirst(at, count);
    if (m_hasBegun)
        m_count += count - placement.skip;
    return placement;
}

AudioAligner::Placement AudioAligner::placeFirst(Time at, std::int64_t count) {
    const Time early = std::max(Time::zero(), Time::zero() - at);
    const std::int64_t skip = early.toRate(m_sampleRate);
    if (skip >= count)
        return {count, std::nullopt};
    begin(std::max(at, Time::zero()));
    return {skip, m_anchor};
}

AudioAligner::Placement AudioAligner::placeNext(Time at, std::int64_t count) {
    const Time gap = at - expected();
    if (absolute(gap) <= tolerance)
        return {};
    if (m_jumps == LongJumps::bridged && absolute(gap) > longJump) {
        m_shift = m_shift - gap;
        return {};
    }
    if (gap < Time::zero())
        return {std::min(count, absolute(gap).toRate(m_sampleRate)), std::nullopt};
    begin(at);
    return {0, at};
}

} // namespace boxlift::media
