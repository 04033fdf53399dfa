#include "engine/media/file_system.h"

namespace boxlift::media {

namespace {

class PathFileSystem : public FileSystem {
public:
    std::shared_ptr<const InputFile> openInput(const std::filesystem::path& path) const override {
        return InputFile::open(path);
    }

    std::unique_ptr<OutputFile> createOutput(const std::filesystem::path& path) const override {
        return OutputFile::create(path);
    }

    void clearOutput(const std::filesystem::path& output,
                     const std::filesystem::path& source) const override {
        media::clearOutput(output, source);
    }
};

} // namespace

const FileSystem& defaultFileSystem() {
    static const PathFileSystem files;
    return files;
}

} // namespace boxlift::media
