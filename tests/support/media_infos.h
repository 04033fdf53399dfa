#pragma once

#include "model/media_info.h"

namespace boxlift::test {

/// H.264 and AAC, 1920x1080, 12.5 s.
inline MediaInfo filmInfo() {
    return {.hasVideo = true,
            .hasAudio = true,
            .videoCodec = fourCharCode("avc1"),
            .audioCodec = fourCharCode("aac "),
            .width = 1920,
            .height = 1080,
            .duration = 12.5};
}

/// AAC alone, 3 s.
inline MediaInfo songInfo() {
    return {.hasAudio = true, .audioCodec = fourCharCode("aac "), .duration = 3};
}

/// H.264 without sound, 2 s.
inline MediaInfo silentInfo() {
    MediaInfo info = filmInfo();
    info.hasAudio = false;
    info.audioCodec.reset();
    info.duration = 2;
    return info;
}

} // namespace boxlift::test
