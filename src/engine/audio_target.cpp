#include <utility>

#include "engine/converter.h"
#include "engine/lossless_copy.h"

namespace boxlift::Converter {

namespace {

/// Bits per second; depends on nothing but the target.
constexpr int bitrate(Target target) {
    return target == Target::aac ? 128000 : 256000;
}

} // namespace

Mode convertAudio(std::shared_ptr<const media::Asset> asset, const Plan& plan, Target target,
                  const std::filesystem::path& output, const Progress& progress,
                  std::stop_token stop, const media::Factory& factory) {
    // A session that fails leaves nothing of its output, so that there is nothing to remove here.
    if (plan.mode == Mode::boxlift &&
        copyLosslessly(asset, FileType::AVFileTypeAppleM4A, output, progress, stop, factory))
        return Mode::boxlift;
    transcodeAudio(std::move(asset), bitrate(target), output, progress, std::move(stop), factory);
    return Mode::reencode;
}

} // namespace boxlift::Converter
