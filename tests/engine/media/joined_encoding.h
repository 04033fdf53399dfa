#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "engine/media/av/handles.h"
#include "engine/media/stereo_sounds.h"
#include "engine/media/stretched_encoder.h"

namespace boxlift::test {

inline constexpr media::AudioEncoder::Settings stereo128{44100, AV_CH_LAYOUT_STEREO, 128'000};
inline constexpr std::int64_t frame = media::AudioStretch::frameLength;
inline constexpr std::int64_t endless =
    std::numeric_limits<std::int64_t>::max() / 4 / frame * frame;
inline constexpr media::StretchPlan serialPlan{endless, endless, 1, 65536};

/// Pushes the first `count` samples of a sound, and closes; or less, when it is aborted.
void pushAll(media::StretchedEncoder& encoder, const StereoSound& sound, std::int64_t count);

std::vector<media::av::PacketPtr> encode(const media::StretchPlan& plan, const StereoSound& sound,
                                         std::int64_t count);

/// The first channel, from the timeline's zero.
std::vector<double> decode(const std::vector<media::av::PacketPtr>& packets);

} // namespace boxlift::test
