#pragma once

#include <filesystem>
#include <stop_token>

#include "queue/engine.h"

namespace boxlift {

/// How a conversion ended well.
struct ConversionResult {
    std::filesystem::path output;
    Mode mode = Mode::reencode;
    double seconds = 0;
};

/// One conversion from the choice of its name to the file, everything that it needs being read
/// beforehand. Blocks; a worker.
struct Conversion {
    std::filesystem::path url;
    MediaInfo info;
    Target target = Target::mp4;
    SizeOption size = SizeOption::original;
    bool removeAudio = false;
    std::filesystem::path outputDir;
    Converter::Progress progress;
    std::stop_token stop;

    /// Throws what the engine throws.
    ConversionResult run(const Engine& engine) const;
};

} // namespace boxlift
