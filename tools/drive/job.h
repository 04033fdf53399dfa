#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "model/media_info.h"
#include "model/plan.h"
#include "model/size_option.h"
#include "model/target.h"

namespace boxlift::drive {

/// One input file on its way through the tool. Touched by one thread at a time.
struct Job {
    enum class State { analyzing, ready, done, failed };

    std::filesystem::path url;
    Target target = Target::mp4;
    SizeOption size = SizeOption::original;
    bool removeAudio = false;
    /// Present once analysed.
    std::optional<MediaInfo> info = std::nullopt;
    State state = State::analyzing;
};

/// Why the job's settings do not suit its file; nothing when they do or while it is not analysed.
std::optional<std::string> blocker(const Job& job);

/// Nothing while the job is not analysed or blocked.
std::optional<Plan> plan(const Job& job);

bool canConvert(const Job& job);

} // namespace boxlift::drive
