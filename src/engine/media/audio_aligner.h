#pragma once

#include <cstdint>
#include <optional>

#include "engine/media/time.h"

namespace boxlift::media {

/// Decides where decoded audio goes on a timeline that starts at zero, by its time stamps but in
/// whole samples, so that coarse stamps leave no cracks and audio never strays from its stamps by
/// more than 5 ms. Works on lengths alone, not on samples. One thread.
class AudioAligner {
public:
    /// What to do with a stretch of audio.
    struct Placement {
        /// Samples at its beginning that overlap with what was there before, or lie before zero.
        std::int64_t skip = 0;
        /// Where the rest begins, when it does not follow what was there before.
        std::optional<Time> start;
    };

    enum class LongJumps {
        kept,    ///< The stamps are right: a gap is a gap.
        bridged, ///< A jump by more than ten seconds is a new beginning of the source's clock.
    };

    explicit AudioAligner(LongJumps jumps) : m_jumps(jumps) {}

    /// Places `count` samples at `sampleRate` that are stamped `at`; an invalid time means that
    /// they follow the last.
    Placement place(Time at, std::int64_t count, int sampleRate);

private:
    Time expected() const;
    Placement placeFirst(Time at, std::int64_t count);
    Placement placeNext(Time at, std::int64_t count);
    void begin(Time at);

    LongJumps m_jumps;
    bool m_hasBegun = false;
    int m_sampleRate = 0;
    /// Where the stretch without a gap began, and how long it is.
    Time m_anchor = Time::zero();
    std::int64_t m_count = 0;
    /// What bridged jumps have added up to.
    Time m_shift = Time::zero();
};

} // namespace boxlift::media
