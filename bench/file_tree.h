#pragma once

#include "support/temp_folder.h"

namespace boxlift::bench {

/// A temporary folder with empty files in folders within folders, a hundred in each.
class FileTree {
public:
    explicit FileTree(int fileCount);

    const std::filesystem::path& path() const { return m_folder.path(); }
    int fileCount() const { return m_fileCount; }

private:
    const int m_fileCount;
    const test::TempFolder m_folder;
};

} // namespace boxlift::bench
