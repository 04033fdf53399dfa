#include "support/media_infos.h"

namespace boxlift::test {

MediaInfo filmInfo() {
    return {.hasVideo = true,
            .hasAudio = true,
            .videoCodec = fourCharCode("avc1"),
            .audioCodec = fourCharCode("aac "),
            .width = 1920,
            .height = 1080,
            .duration = 12.5};
}

MediaInfo songInfo() {
    MediaInfo info;
    info.hasAudio = true;
    info.audioCodec = fourCharCode("aac ");
    info.duration = 3;
    return info;
}

MediaInfo silentInfo() {
    MediaInfo info = filmInfo();
    info.hasAudio = false;
    info.audioCodec.reset();
    info.duration = 2;
    return info;
}

} // namespace boxlift::test
