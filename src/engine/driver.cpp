#include <utility>

#include "engine/cancellation.h"
#include "engine/converter.h"
#include "engine/lossless_copy.h"

namespace boxlift::Converter {

namespace {

Mode convertVideo(std::shared_ptr<const media::Asset> source, Mode planned, FileType type,
                  SizeOption size, const std::filesystem::path& output, const Progress& progress,
                  const std::stop_token& stop, const media::Factory& factory) {
    if (planned == Mode::boxlift && copyLosslessly(source, type, output, progress, stop, factory))
        return Mode::boxlift;
    exportAsset(std::move(source), exportPreset(size), type, output, progress, stop, factory);
    return Mode::reencode;
}

} // namespace

// On errors there is no output to remove: sessions and writers give it its name only when it is
// whole, and what else may stand there belongs to others.
Mode convert(const std::filesystem::path& url, const MediaInfo& info, Target target,
             SizeOption size, bool removeAudio, const std::filesystem::path& output,
             const Progress& progress, std::stop_token stop, const media::Factory& factory) {
    return cancellable(stop, [&] {
        const Plan planned = plan(info, target, size, removeAudio);
        factory.clearOutput(output, url);
        std::shared_ptr<const media::Asset> source = factory.openAsset(url, stop);
        throwIfStopped(stop);
        if (isAudio(target))
            return convertAudio(source, planned, target, output, progress, stop, factory);
        if (removeAudio && info.hasAudio)
            source = composition(*source, true, false, factory);
        return convertVideo(source, planned.mode, fileType(target), size, output, progress, stop,
                            factory);
    });
}

} // namespace boxlift::Converter
