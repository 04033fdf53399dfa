#pragma once

#include <filesystem>
#include <vector>

#include "queue/preferences.h"

namespace boxlift {

/// The user's folders, as the system names them.
struct UserFolders {
    /// For films; may be none.
    std::vector<std::filesystem::path> movies;
    std::filesystem::path home;

    static UserFolders ofSystem();
};

/// The folder into which every conversion writes. It is remembered once the user has chosen one,
/// and nobody checks that it exists: the next conversion makes it. Main thread.
class OutputFolder {
public:
    /// The remembered one, else the one for films, else home. `preferences` outlives it.
    OutputFolder(Preferences& preferences, const UserFolders& folders);

    const std::filesystem::path& path() const { return m_path; }
    /// Remembers it, too.
    void set(const std::filesystem::path& path);

private:
    Preferences& m_preferences;
    std::filesystem::path m_path;
};

} // namespace boxlift
