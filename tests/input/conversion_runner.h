#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "engine/converter.h"

namespace boxlift::test {

/// What the analysis said: the description, or the sentence.
struct Analysis {
    std::optional<MediaInfo> info{};
    std::string sentence{};
    double seconds = 0;
};

Analysis analyze(const std::filesystem::path& path);

struct ConversionRequest {
    std::filesystem::path source{};
    MediaInfo info{};
    Target target = Target::mp4;
    std::filesystem::path output{};
    SizeOption size = SizeOption::original;
    bool removeAudio = false;
};

/// A request with what analysis says of the source. Throws what analysis throws.
ConversionRequest requestFor(const std::filesystem::path& source, Target target,
                             const std::filesystem::path& output);

/// How a conversion ended: one of the first three is set.
struct Conversion {
    std::optional<Mode> mode{};
    std::string sentence{};
    bool wasCancelled = false;
    /// The time was up: an outcome that came with a stop is not the engine's own.
    bool wasTooSlow = false;
    double seconds = 0;
    std::vector<double> progress{};
};

/// Long enough for any conversion in a test on a busy machine.
constexpr std::chrono::seconds patience(180);

/// Runs a conversion, which is stopped when it takes longer than `limit` or when `stop` asks.
Conversion convert(const ConversionRequest& request, std::stop_token stop = {},
                   std::chrono::seconds limit = patience,
                   const Converter::Progress& alsoReport = {});

/// The names in a folder, hidden ones too, in order.
std::vector<std::string> namesIn(const std::filesystem::path& folder);

} // namespace boxlift::test
