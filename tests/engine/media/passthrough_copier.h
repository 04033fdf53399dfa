#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/media/error.h"
#include "engine/media/export_session.h"
#include "engine/media/file_asset.h"
#include "engine/media/selection.h"

namespace boxlift::media::test {

/// How one export ended.
struct CopyResult {
    ExportSession::Status status = ExportSession::Status::unknown;
    std::optional<ErrorKind> error{};
    std::string technical{};
};

std::shared_ptr<const FileAsset> openFile(const std::filesystem::path& path);
/// The whole of a file, for export.
Selection selectAll(const std::filesystem::path& path);

std::unique_ptr<ExportSession> makeCopier(const Asset& asset);
/// Runs a session to its end, which must come within half a minute.
CopyResult finish(ExportSession& session);
CopyResult copyTo(const std::filesystem::path& output, FileType type, const Asset& asset,
                  bool optimize = false);
CopyResult copyTo(const std::filesystem::path& output, FileType type,
                  const std::filesystem::path& source);
/// The types that a file's tracks can be copied into.
std::vector<FileType> typesFor(const std::filesystem::path& source);

/// The names in a folder, hidden ones too, sorted.
std::vector<std::string> namesIn(const std::filesystem::path& folder);

} // namespace boxlift::media::test
