#pragma once

#include <string>

#include "model/media_info.h"
#include "model/mode.h"
#include "model/size_option.h"
#include "model/target.h"

namespace boxlift {

/// What a conversion will do, decided before anything runs.
struct Plan {
    /// `boxlift` when every kept track is copied unchanged.
    Mode mode = Mode::reencode;
    /// One sentence for the user.
    std::string detail;

    friend bool operator==(const Plan&, const Plan&) = default;
};

namespace Converter {

/// Decides between copying and encoding. Pure: looks at the kinds of track and their codecs alone,
/// never at size or duration.
Plan plan(const MediaInfo& info, Target target, SizeOption size, bool removeAudio);

} // namespace Converter

} // namespace boxlift
