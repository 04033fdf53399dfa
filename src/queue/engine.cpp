#include "queue/engine.h"

namespace boxlift {

namespace fs = std::filesystem;

Engine converterEngine() {
    return {
        .analyze = [](const fs::path& url,
                      std::stop_token stop) { return Converter::analyze(url, stop); },
        .convert =
            [](const fs::path& url, const MediaInfo& info, Target target, SizeOption size,
               bool removeAudio, const fs::path& output, const Converter::Progress& progress,
               std::stop_token stop) {
                return Converter::convert(url, info, target, size, removeAudio, output, progress,
                                          stop);
            },
    };
}

} // namespace boxlift
