#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "model/four_char_code.h"

namespace boxlift {

/// What analysis learnt about one input file.
struct MediaInfo {
    bool hasVideo = false;
    bool hasAudio = false;
    /// Code of the first video track's first format; absent without a video track or format.
    std::optional<FourCharCode> videoCodec = {};
    /// Code of the first audio track's first format; absent without an audio track or format.
    std::optional<FourCharCode> audioCodec = {};
    /// Pixels of the first video track, pixel aspect applied, rotation not; 0 without video.
    std::int64_t width = 0;
    std::int64_t height = 0;
    /// Seconds; may be zero or not a number when the file does not tell.
    double duration = 0;

    friend bool operator==(const MediaInfo&, const MediaInfo&) = default;

    /// One line: video, audio and duration, as far as present, joined by " · ".
    std::string summary() const;

    /// The code's four characters (Mac OS Roman), spaces and tabs trimmed; "unknown" when absent.
    static std::string fourCC(std::optional<FourCharCode> code);
    static std::string videoName(std::optional<FourCharCode> code);
    static std::string audioName(std::optional<FourCharCode> code);
    /// "m:ss" below an hour, else "h:mm:ss", after rounding to whole seconds, halves away from
    /// zero. `seconds` must be finite and not negative.
    static std::string format(double seconds);
};

} // namespace boxlift
