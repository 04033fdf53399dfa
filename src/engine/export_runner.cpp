#include <algorithm>
#include <chrono>
#include <utility>

#include "engine/cancellation.h"
#include "engine/converter.h"
#include "engine/failure.h"

namespace boxlift::Converter {

namespace {

using std::chrono_literals::operator""ms;

std::unique_ptr<media::ExportSession> makeSession(std::shared_ptr<const media::Asset> asset,
                                                  ExportPreset preset, FileType type,
                                                  const std::filesystem::path& output,
                                                  const std::stop_token& stop,
                                                  const media::Factory& factory) {
    auto session = factory.makeExportSession(std::move(asset), preset, stop);
    if (!session)
        throw ConvertError("macOS has no export preset for this file.");
    const auto types = session->supportedFileTypes();
    if (std::find(types.begin(), types.end(), type) == types.end())
        throw ConvertError("This content can't be written to that container.");
    session->setOutputUrl(output);
    session->setOutputFileType(type);
    session->setShouldOptimizeForNetworkUse(type == FileType::AVFileTypeMPEG4);
    return session;
}

/// Reports the session's progress until it ends. A session that has reached 1 is complete: that
/// is left to be said when its status is known.
void watch(media::ExportSession& session, const Progress& progress) {
    do {
        const double fraction = session.progress();
        if (fraction < 1.0)
            progress(fraction);
    } while (!session.waitUntilFinished(100ms));
}

void run(media::ExportSession& session, const Progress& progress, const std::stop_token& stop) {
    const std::stop_callback cancel(stop, [&session] { session.cancelExport(); });
    throwIfStopped(stop);
    session.exportAsynchronously();
    watch(session, progress);
}

void requireSuccess(const media::ExportSession& session) {
    switch (session.status()) {
    case media::ExportSession::Status::completed:
        return;
    case media::ExportSession::Status::cancelled:
        throw Cancelled();
    case media::ExportSession::Status::unknown:
    case media::ExportSession::Status::waiting:
    case media::ExportSession::Status::exporting:
    case media::ExportSession::Status::failed:
        break;
    }
    throwFailure(session.error(), "Export failed.");
}

} // namespace

void exportAsset(std::shared_ptr<const media::Asset> asset, ExportPreset preset, FileType type,
                 const std::filesystem::path& output, const Progress& progress,
                 std::stop_token stop, const media::Factory& factory) {
    cancellable(stop, [&] {
        const auto session = makeSession(std::move(asset), preset, type, output, stop, factory);
        run(*session, progress, stop);
        requireSuccess(*session);
    });
    progress(1.0);
}

} // namespace boxlift::Converter
