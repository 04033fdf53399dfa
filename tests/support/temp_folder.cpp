#include "support/temp_folder.h"

#include <cerrno>
#include <fstream>
#include <iterator>
#include <system_error>

#include <stdlib.h>
#include <unistd.h>

namespace boxlift::test {

namespace fs = std::filesystem;

TempFolder::TempFolder() {
    std::string name = (fs::canonical(fs::temp_directory_path()) / "boxlift-test-XXXXXX").native();
    if (::mkdtemp(name.data()) == nullptr)
        throw std::system_error(errno, std::generic_category(), "making " + name);
    m_path = name;
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
}

fs::path writeFile(const fs::path& path, std::string_view content) {
    fs::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    file << content;
    if (!file.flush())
        throw std::system_error(errno, std::generic_category(), "writing " + path.string());
    return path;
}

std::string readFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw std::system_error(errno, std::generic_category(), "reading " + path.string());
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace boxlift::test
