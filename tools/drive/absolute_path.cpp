#include "drive/absolute_path.h"

#include <string>

namespace boxlift::drive {

std::filesystem::path absolutePath(const std::filesystem::path& path,
                                   const std::filesystem::path& currentFolder) {
    const std::filesystem::path joined = currentFolder / path;
    std::string result;
    for (const std::filesystem::path& component : joined.relative_path()) {
        if (!component.empty() && component != ".")
            result += "/" + component.native();
    }
    return result.empty() ? "/" : result;
}

} // namespace boxlift::drive
