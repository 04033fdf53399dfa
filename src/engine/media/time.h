#pragma once

#include <compare>
#include <cstdint>
#include <limits>

namespace boxlift::media {

/// A point or a length on a media timeline, exact for every usual frame and sample rate: whole
/// ticks of 1/705,600,000 s (divisible by 24, 25, 30, 60, 1000/1001 of them, 44,100, 48,000 and
/// 90,000). Range: about 414 years either way. A time may be invalid (unknown).
class Time {
public:
    static constexpr std::int64_t ticksPerSecond = 705'600'000;

    /// The invalid time.
    constexpr Time() = default;
    static constexpr Time zero() { return fromTicks(0); }
    static constexpr Time fromTicks(std::int64_t ticks) {
        Time time;
        time.m_ticks = ticks;
        return time;
    }
    /// Rounded to the nearest tick; invalid when `seconds` is not finite or out of range.
    static Time fromSeconds(double seconds);
    /// `value` / `perSecond` seconds, rounded to the nearest tick. `perSecond` is positive.
    static Time fromRate(std::int64_t value, std::int64_t perSecond);

    constexpr bool isValid() const { return m_ticks != invalidTicks; }
    /// Only for a valid time.
    constexpr std::int64_t ticks() const { return m_ticks; }
    /// Not a number for an invalid time.
    double seconds() const;
    /// This time in units of 1/`perSecond` s, rounded to the nearest. Only for a valid time.
    std::int64_t toRate(std::int64_t perSecond) const;

    friend constexpr bool operator==(Time, Time) = default;
    friend constexpr std::strong_ordering operator<=>(Time a, Time b) {
        return a.m_ticks <=> b.m_ticks;
    }
    /// Invalid when either side is, or when the result is out of range.
    friend constexpr Time operator+(Time a, Time b) {
        Time sum;
        const bool isValid = a.isValid() && b.isValid() &&
                             !__builtin_add_overflow(a.m_ticks, b.m_ticks, &sum.m_ticks);
        return isValid ? sum : Time();
    }
    friend constexpr Time operator-(Time a, Time b) {
        Time difference;
        const bool isValid = a.isValid() && b.isValid() &&
                             !__builtin_sub_overflow(a.m_ticks, b.m_ticks, &difference.m_ticks);
        return isValid ? difference : Time();
    }

private:
    static constexpr std::int64_t invalidTicks = std::numeric_limits<std::int64_t>::min();
    std::int64_t m_ticks = invalidTicks;
};

/// A half-open range on a timeline.
struct TimeRange {
    Time start;
    Time duration;

    constexpr Time end() const { return start + duration; }
    friend constexpr bool operator==(const TimeRange&, const TimeRange&) = default;
};

} // namespace boxlift::media
