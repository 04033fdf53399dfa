#pragma once

#include <filesystem>
#include <functional>
#include <stop_token>

#include "engine/converter.h"

namespace boxlift {

/// What is asked of the conversion engine. Analysis and conversion block, are called off the main
/// thread and throw Cancelled after a stop.
struct Engine {
    /// Called on several threads at once.
    std::function<MediaInfo(const std::filesystem::path& url, std::stop_token stop)> analyze;
    std::function<Mode(const std::filesystem::path& url, const MediaInfo& info, Target target,
                       SizeOption size, bool removeAudio, const std::filesystem::path& output,
                       const Converter::Progress& progress, std::stop_token stop)>
        convert;
    /// Makes ready what analyses need, ahead of the first one; where there is anything. Does not
    /// block; any thread.
    std::function<void()> prepare = {};
};

/// The real one, in this process.
Engine converterEngine();

} // namespace boxlift
