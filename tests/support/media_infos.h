#pragma once

#include "model/media_info.h"

namespace boxlift::test {

/// H.264 and AAC, 1920x1080, 12.5 s.
MediaInfo filmInfo();
/// AAC alone, 3 s.
MediaInfo songInfo();
/// H.264 without sound, 2 s.
MediaInfo silentInfo();

} // namespace boxlift::test
