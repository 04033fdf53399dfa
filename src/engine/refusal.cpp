#include "engine/refusal.h"

#include <string>

#include "engine/converter.h"
#include "model/job_rules.h"

namespace boxlift::Converter {

namespace {

std::string lowerCased(std::string_view text) {
    std::string lower(text);
    for (char& character : lower)
        if (character >= 'A' && character <= 'Z')
            character = static_cast<char>(character - 'A' + 'a');
    return lower;
}

} // namespace

const std::unordered_map<std::string_view, std::string_view>& unsupportedExtensions() {
    static const std::unordered_map<std::string_view, std::string_view> names{
        {"mkv", "MKV"}, {"avi", "AVI"}, {"webm", "WebM"}, {"wmv", "WMV"}, {"flv", "FLV"},
        {"ogg", "Ogg"}, {"ogv", "Ogg"}, {"opus", "Opus"}, {"wma", "WMA"}, {"rmvb", "RealMedia"},
    };
    return names;
}

void refuseUnsupported(const std::filesystem::path& url) {
    const std::string fileName = url.filename().string();
    const std::string extension = lowerCased(pathExtension(fileName));
    const auto entry = unsupportedExtensions().find(extension);
    if (entry != unsupportedExtensions().end())
        throw ConvertError(std::string(entry->second) +
                           " files can't be opened by macOS. Convert them with a tool like ffmpeg "
                           "or HandBrake first.");
}

ConvertError cannotOpen() {
    return ConvertError("macOS can't open this file. It may be damaged or in a format "
                        "AVFoundation doesn't support.");
}

} // namespace boxlift::Converter
