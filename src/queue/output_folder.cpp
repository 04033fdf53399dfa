#include "queue/output_folder.h"

#include <string_view>

#include <QDir>
#include <QFile>
#include <QStandardPaths>

namespace boxlift {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view outputDirKey = "outputDir";

fs::path toPath(const QString& text) {
    return QFile::encodeName(text).toStdString();
}

fs::path initialPath(const Preferences& preferences, const UserFolders& folders) {
    if (const auto remembered = preferences.string(outputDirKey))
        return *remembered;
    return folders.movies.empty() ? folders.home : folders.movies.front();
}

} // namespace

UserFolders UserFolders::ofSystem() {
    UserFolders folders;
    for (const QString& folder : QStandardPaths::standardLocations(QStandardPaths::MoviesLocation))
        folders.movies.push_back(toPath(folder));
    folders.home = toPath(QDir::homePath());
    return folders;
}

OutputFolder::OutputFolder(Preferences& preferences, const UserFolders& folders)
    : m_preferences(preferences), m_path(initialPath(preferences, folders)) {}

void OutputFolder::set(const fs::path& path) {
    m_path = path;
    m_preferences.setString(outputDirKey, path.native());
}

} // namespace boxlift
