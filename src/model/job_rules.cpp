#include "model/job_rules.h"

namespace boxlift {

std::optional<std::string> blocker(const MediaInfo& info, Target target) {
    if (!info.hasAudio && isAudio(target))
        return "This file has no audio track to extract.";
    if (!info.hasVideo && !isAudio(target))
        return "This is an audio file. Choose M4A or AAC audio only.";
    return std::nullopt;
}

Target targetFor(const MediaInfo& info, Target wanted) {
    return info.hasVideo || isAudio(wanted) ? wanted : Target::m4a;
}

std::string baseName(std::string_view fileName) {
    const auto dot = fileName.rfind('.');
    const bool isWhole = dot == std::string_view::npos || dot == 0;
    return std::string(isWhole ? fileName : fileName.substr(0, dot));
}

std::string_view pathExtension(std::string_view fileName) {
    const auto dot = fileName.rfind('.');
    return dot == std::string_view::npos ? std::string_view() : fileName.substr(dot + 1);
}

std::string outputName(std::string_view inputFileName, Target target,
                       const std::function<bool(const std::string&)>& isTaken) {
    const std::string base = baseName(inputFileName);
    const std::string extension = "." + std::string(fileExtension(target));
    std::string candidate = base + extension;
    for (int counter = 2; isTaken(candidate); ++counter)
        candidate = base + " " + std::to_string(counter) + extension;
    return candidate;
}

} // namespace boxlift
