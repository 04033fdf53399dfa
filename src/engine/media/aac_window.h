#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace boxlift::media {

/// How a frame of AAC overlaps its neighbours, in all channels alike (ISO/IEC 14496-3, table 4.6).
/// Where two encodings of one signal agree on it, packets of the second can follow packets of the
/// first: what the one leaves unfinished the other completes.
struct AacWindow {
    int sequence = 0;
    int shape = 0;

    friend bool operator==(const AacWindow&, const AacWindow&) = default;
};

/// From a raw packet of a mono or stereo track. Nothing when the two channels of a pair each have
/// their own, or when the packet begins with something else than a channel.
std::optional<AacWindow> readAacWindow(std::span<const std::uint8_t> packet);

} // namespace boxlift::media
