#include "engine/media/passthrough_copier.h"

#include <algorithm>
#include <chrono>
#include <stdexcept>

#include "engine/media/passthrough_session.h"

namespace boxlift::media::test {

using namespace std::chrono_literals;

std::shared_ptr<const FileAsset> openFile(const std::filesystem::path& path) {
    return FileAsset::open(InputFile::open(path), {});
}

Selection selectAll(const std::filesystem::path& path) {
    auto selection = Selection::of(*openFile(path));
    if (!selection)
        throw std::invalid_argument("there is nothing to select");
    return std::move(*selection);
}

std::unique_ptr<ExportSession> makeCopier(const Asset& asset) {
    auto selection = Selection::of(asset);
    if (!selection)
        throw std::invalid_argument("there is nothing to copy");
    return std::make_unique<PassthroughSession>(std::move(*selection));
}

CopyResult finish(ExportSession& session) {
    session.exportAsynchronously();
    if (!session.waitUntilFinished(30s))
        throw std::runtime_error("the export does not end");
    CopyResult result;
    result.status = session.status();
    try {
        if (session.error())
            std::rethrow_exception(session.error());
    } catch (const Error& error) {
        result.error = error.kind();
        result.technical = error.technical();
    }
    return result;
}

CopyResult copyTo(const std::filesystem::path& output, FileType type, const Asset& asset,
                  bool optimize) {
    const auto session = makeCopier(asset);
    session->setOutputUrl(output);
    session->setOutputFileType(type);
    session->setShouldOptimizeForNetworkUse(optimize);
    return finish(*session);
}

CopyResult copyTo(const std::filesystem::path& output, FileType type,
                  const std::filesystem::path& source) {
    return copyTo(output, type, *openFile(source));
}

std::vector<FileType> typesFor(const std::filesystem::path& source) {
    return makeCopier(*openFile(source))->supportedFileTypes();
}

std::vector<std::string> namesIn(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace boxlift::media::test
