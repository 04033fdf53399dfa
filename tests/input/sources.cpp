#include "input/sources.h"

#include "support/media_generator.h"

namespace boxlift::test {

namespace fs = std::filesystem;

MediaSpec h264AndAac(double seconds) {
    return {.format = "mov",
            .seconds = seconds,
            .video = {{.codec = "libx264"}},
            .audio = {{.codec = "aac", .signal = Signal::noise}}};
}

fs::path makeSource(const fs::path& folder, const char* name, const MediaSpec& spec) {
    fs::create_directories(folder / "in");
    const fs::path path = folder / "in" / name;
    makeMedia(path, spec);
    return path;
}

fs::path makeOutputFolder(const fs::path& folder) {
    fs::create_directories(folder / "out");
    return folder / "out";
}

} // namespace boxlift::test
