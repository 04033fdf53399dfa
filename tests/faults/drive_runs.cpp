#include "faults/drive_runs.h"

#include <algorithm>
#include <chrono>

#include "faults/program.h"
#include "input/conversion_runner.h"
#include "input/sources.h"

namespace boxlift::test {

namespace fs = std::filesystem;

DriveRuns::DriveRuns() {
    // With MP4 as the target of all.
    m_sources = {
        makeSource(m_folder.path(), "copied.mov", h264AndAac(3)),
        makeSource(
            m_folder.path(), "encoded.mov",
            {.format = "mov", .seconds = 1, .video = {{}}, .audio = {{.codec = "pcm_s16le"}}}),
        makeSource(m_folder.path(), "transcoded.wav",
                   {.format = "wav", .seconds = 4, .audio = {{.codec = "pcm_s16le"}}})};
    const fs::path folder = newFolder("whole");
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(Program(command(folder)).wait(), 0);
    m_seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    for (const std::string& name : namesIn(folder))
        m_whole[name] = readFile(folder / name);
    EXPECT_EQ(m_whole.size(), m_sources.size());
}

std::vector<std::string> DriveRuns::command(const fs::path& outputDir) const {
    std::vector<std::string> words{BOXLIFT_DRIVE, "convert", "--output-dir", outputDir};
    words.insert(words.end(), m_sources.begin(), m_sources.end());
    return words;
}

fs::path DriveRuns::newFolder(const std::string& name) const {
    const fs::path folder = m_folder.path() / name;
    fs::create_directory(folder);
    return folder;
}

void DriveRuns::expectWholeFilesOnly(const fs::path& folder) const {
    for (const std::string& name : namesIn(folder)) {
        if (name.starts_with('.'))
            continue;
        const std::string base = name.substr(0, name.find_first_of(" ."));
        const auto original = std::ranges::find_if(
            m_whole, [&](const auto& file) { return file.first.starts_with(base + '.'); });
        ASSERT_NE(original, m_whole.end()) << name;
        EXPECT_TRUE(readFile(folder / name) == original->second) << name << " is not whole";
    }
}

int DriveRuns::hiddenCount(const fs::path& folder) {
    return static_cast<int>(std::ranges::count_if(
        namesIn(folder), [](const std::string& name) { return name.starts_with('.'); }));
}

} // namespace boxlift::test
