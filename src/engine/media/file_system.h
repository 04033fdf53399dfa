#pragma once

#include <filesystem>
#include <memory>

#include "engine/media/input_file.h"
#include "engine/media/output_file.h"

namespace boxlift::media {

/// How the media layer comes to the files that it reads and writes: by their paths, or where a
/// process may open none, by descriptors that it was handed. Any thread.
class FileSystem {
public:
    virtual ~FileSystem() = default;

    /// Throws media::Error (sourceUnreadable).
    virtual std::shared_ptr<const InputFile> openInput(const std::filesystem::path& path) const = 0;
    /// An empty file for one attempt at the output. Throws media::Error.
    virtual std::unique_ptr<OutputFile> createOutput(const std::filesystem::path& path) const = 0;
    /// See Factory::clearOutput().
    virtual void clearOutput(const std::filesystem::path& output,
                             const std::filesystem::path& source) const = 0;
};

/// The one over paths. Lives as long as the process.
const FileSystem& defaultFileSystem();

/// Where an output goes, and who makes the file there.
struct OutputPlace {
    OutputPlace(std::filesystem::path path = {}, const FileSystem& files = defaultFileSystem())
        : path(std::move(path)), files(&files) {}

    std::unique_ptr<OutputFile> create() const { return files->createOutput(path); }

    std::filesystem::path path;
    const FileSystem* files;
};

} // namespace boxlift::media
