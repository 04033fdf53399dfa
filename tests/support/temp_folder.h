#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace boxlift::test {

/// An empty folder of one's own in the system's folder for temporary files; removed with all that
/// is in it when this object goes.
class TempFolder {
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    /// Absolute, links resolved.
    const std::filesystem::path& path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

/// Writes a file, with the folders above it; returns its path.
std::filesystem::path writeFile(const std::filesystem::path& path, std::string_view content = {});

/// All of a file's bytes; throws when it cannot be read.
std::string readFile(const std::filesystem::path& path);

} // namespace boxlift::test
