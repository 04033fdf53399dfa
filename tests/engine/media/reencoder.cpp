#include "engine/media/reencoder.h"

#include <algorithm>
#include <chrono>
#include <stdexcept>

#include "engine/media/file_asset.h"
#include "engine/media/reencode_session.h"
#include "engine/media/selection.h"

namespace boxlift::media::test {

namespace {

using namespace std::chrono_literals;

constexpr auto longest = 60s;

std::optional<ErrorKind> kindOf(const std::exception_ptr& error) {
    if (!error)
        return std::nullopt;
    try {
        std::rethrow_exception(error);
    } catch (const Error& mediaError) {
        return mediaError.kind();
    }
}

} // namespace

std::shared_ptr<const Asset> openAsset(const std::filesystem::path& path) {
    return FileAsset::open(InputFile::open(path), {});
}

std::unique_ptr<ExportSession> makeSession(const Asset& asset, const std::filesystem::path& output,
                                           const ReencodeOptions& options) {
    auto selection = Selection::of(asset);
    if (!selection)
        throw std::invalid_argument("nothing to export");
    auto session = makeReencodeSession(std::move(*selection), options.preset);
    session->setOutputUrl(output);
    session->setOutputFileType(options.type);
    session->setShouldOptimizeForNetworkUse(options.optimize);
    return session;
}

Reencoding run(ExportSession& session) {
    Reencoding result;
    session.exportAsynchronously();
    const auto deadline = std::chrono::steady_clock::now() + longest;
    while (!session.waitUntilFinished(5ms)) {
        // Finished meanwhile: no longer "while it ran".
        const float progress = session.progress();
        if (session.status() == ExportSession::Status::exporting)
            result.progress.push_back(progress);
        if (std::chrono::steady_clock::now() > deadline)
            throw std::runtime_error("the export does not end");
    }
    result.status = session.status();
    result.error = kindOf(session.error());
    result.lastProgress = session.progress();
    return result;
}

Reencoding reencode(const std::filesystem::path& source, const std::filesystem::path& output,
                    const ReencodeOptions& options) {
    const auto session = makeSession(*openAsset(source), output, options);
    return run(*session);
}

std::vector<std::string> contents(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace boxlift::media::test
