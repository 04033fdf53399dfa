#include "queue/expand.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "model/job_rules.h"

namespace boxlift {

namespace {

namespace fs = std::filesystem;

/// Extensions (lower case) of folders that people know as one document: what lies in them is
/// nobody's file.
constexpr auto packageExtensions = std::to_array<std::string_view>({
    // Programs and their parts.
    "app",
    "appex",
    "bundle",
    "component",
    "framework",
    "kext",
    "mdimporter",
    "plugin",
    "prefpane",
    "qlgenerator",
    "saver",
    "wdgt",
    "xpc",
    // Libraries and projects of photo, film and music programs.
    "aplibrary",
    "band",
    "cmproj",
    "dvdmedia",
    "fcpbundle",
    "fcpcache",
    "imovielibrary",
    "imovieproject",
    "imoviemobile",
    "logicx",
    "migratedphotolibrary",
    "musiclibrary",
    "photolibrary",
    "photoslibrary",
    "rcproject",
    "screenflow",
    "theater",
    "tvlibrary",
    // Documents.
    "key",
    "numbers",
    "pages",
    "rtfd",
    "scptd",
    "textbundle",
    "workflow",
    // Disk images, installers, downloads, developer files.
    "download",
    "mlpackage",
    "mpkg",
    "nib",
    "pkg",
    "playground",
    "sparsebundle",
    "xcarchive",
    "xcodeproj",
    "xcworkspace",
});

std::string lowerCase(std::string_view text) {
    std::string result(text);
    std::ranges::transform(result, result.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return result;
}

bool isPackage(const fs::path& folder) {
    const std::string name = folder.filename().native();
    return std::ranges::find(packageExtensions, lowerCase(pathExtension(name))) !=
           packageExtensions.end();
}

bool isHidden(const fs::path& entry) {
    return entry.filename().native().starts_with('.');
}

/// What a folder holds, as far as it can be read.
std::vector<fs::directory_entry> entries(const fs::path& folder) {
    std::vector<fs::directory_entry> result;
    std::error_code error;
    fs::directory_iterator iterator(folder, error);
    while (!error && iterator != fs::directory_iterator()) {
        result.push_back(*iterator);
        iterator.increment(error);
    }
    return result;
}

/// A walk through one folder. It keeps its place in a list of its own, not in calls within calls,
/// and no folder open between two steps, so that the depth is bounded by neither.
class FolderWalk {
public:
    explicit FolderWalk(const fs::path& folder) { enter(folder); }

    void appendFilesTo(std::vector<fs::path>& files) {
        while (!m_pending.empty()) {
            const fs::directory_entry entry = std::move(m_pending.back());
            m_pending.pop_back();
            visit(entry, files);
        }
    }

private:
    void visit(const fs::directory_entry& entry, std::vector<fs::path>& files) {
        std::error_code error;
        if (isHidden(entry.path()) || entry.is_symlink(error))
            return;
        if (entry.is_regular_file(error))
            files.push_back(entry.path());
        else if (entry.is_directory(error) && !isPackage(entry.path()))
            enter(entry.path());
    }

    /// Backwards: the first entry is then the next one to be taken.
    void enter(const fs::path& folder) {
        std::vector<fs::directory_entry> found = entries(folder);
        std::ranges::move(found.rbegin(), found.rend(), std::back_inserter(m_pending));
    }

    std::vector<fs::directory_entry> m_pending;
};

} // namespace

std::vector<fs::path> expand(const std::vector<fs::path>& paths) {
    std::vector<fs::path> files;
    for (const fs::path& path : paths) {
        std::error_code error;
        if (fs::is_directory(path, error))
            FolderWalk(path).appendFilesTo(files);
        else
            files.push_back(path);
    }
    return files;
}

} // namespace boxlift
