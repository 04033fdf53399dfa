#include "queue/conversion.h"

#include <chrono>
#include <system_error>

#include "model/job_rules.h"

namespace boxlift {

namespace {

namespace fs = std::filesystem;

/// A dangling link takes its name, too.
bool isTaken(const fs::path& path) {
    std::error_code error;
    return fs::exists(fs::symlink_status(path, error));
}

fs::path freeOutput(const Conversion& conversion) {
    const fs::path& folder = conversion.outputDir;
    const auto isNameTaken = [&](const std::string& name) { return isTaken(folder / name); };
    return folder / outputName(conversion.url.filename().native(), conversion.target, isNameTaken);
}

} // namespace

ConversionResult Conversion::run(const Engine& engine) const {
    const fs::path output = freeOutput(*this);
    const auto start = std::chrono::steady_clock::now();
    // Without the folder the conversion fails and says so.
    std::error_code ignored;
    fs::create_directories(outputDir, ignored);
    const Mode mode = engine.convert(url, info, target, size, removeAudio, output, progress, stop);
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    return {.output = output, .mode = mode, .seconds = elapsed.count()};
}

} // namespace boxlift
