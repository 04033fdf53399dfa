#pragma once

#include <cstdint>
#include <vector>

#include "engine/media/audio_channel_layout.h"

namespace boxlift::media {

/// How much of each channel of `from` goes into each channel of `to` (a mask): rows are the
/// channels of `to`. Scaled so that the loudest output can just not clip: the gains of no row add
/// up to more than 1. One channel reaches a stereo pair at full level; centre and surrounds reach
/// it at 0.707 (ITU-R BS.775), low frequencies not at all.
std::vector<double> mixMatrix(const ChannelLayout& from, std::uint64_t to);

} // namespace boxlift::media
