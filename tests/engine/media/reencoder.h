#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "engine/media/asset.h"
#include "engine/media/error.h"
#include "engine/media/export_session.h"
#include "model/export_preset.h"

namespace boxlift::media::test {

/// How one export went.
struct Reencoding {
    ExportSession::Status status = ExportSession::Status::unknown;
    std::optional<ErrorKind> error;
    /// What was shown while it ran.
    std::vector<float> progress;
    float lastProgress = 0;
};

struct ReencodeOptions {
    ExportPreset preset = ExportPreset::AVAssetExportPresetHighestQuality;
    FileType type = FileType::AVFileTypeMPEG4;
    bool optimize = false;
};

std::shared_ptr<const Asset> openAsset(const std::filesystem::path& path);

/// A session that is ready to start.
std::unique_ptr<ExportSession> makeSession(const Asset& asset, const std::filesystem::path& output,
                                           const ReencodeOptions& options = {});

/// Exports to the end; a test that runs longer than a minute has failed.
Reencoding reencode(const std::filesystem::path& source, const std::filesystem::path& output,
                    const ReencodeOptions& options = {});
Reencoding run(ExportSession& session);

/// Names of what is in a folder, sorted.
std::vector<std::string> contents(const std::filesystem::path& folder);

} // namespace boxlift::media::test
