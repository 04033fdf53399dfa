#include "bench/file_tree.h"

#include <string>

namespace boxlift::bench {

FileTree::FileTree(int fileCount) : m_fileCount(fileCount) {
    for (int i = 0; i < fileCount; ++i) {
        const auto folder = path() / std::to_string(i / 1000) / std::to_string(i / 100);
        test::writeFile(folder / ("holiday " + std::to_string(i) + ".mov"));
    }
}

} // namespace boxlift::bench
