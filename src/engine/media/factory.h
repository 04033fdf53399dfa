#pragma once

#include <filesystem>
#include <memory>
#include <stop_token>

#include "engine/media/asset_reader.h"
#include "engine/media/asset_writer.h"
#include "engine/media/composition.h"
#include "engine/media/export_session.h"
#include "engine/media/file_system.h"
#include "model/export_preset.h"

namespace boxlift::media {

/// Makes the objects of the media layer; the seam at which tests put in others. Any thread.
class Factory {
public:
    virtual ~Factory() = default;

    /// Opens a file. Throws media::Error when it cannot be read or is not media that we open,
    /// Cancelled when `stop` asks.
    virtual std::shared_ptr<const Asset> openAsset(const std::filesystem::path& path,
                                                   std::stop_token stop) const = 0;
    virtual std::shared_ptr<MutableComposition> makeComposition() const = 0;
    /// Null when the preset cannot handle the asset. Throws media::Error when the source cannot be
    /// opened anew, Cancelled when `stop` asks; a later stop cancels the session.
    virtual std::unique_ptr<ExportSession> makeExportSession(std::shared_ptr<const Asset> asset,
                                                             ExportPreset preset,
                                                             std::stop_token stop) const = 0;
    virtual std::unique_ptr<AssetReader>
    makeAssetReader(std::shared_ptr<const Asset> asset) const = 0;
    /// Throws media::Error when the output cannot be made.
    virtual std::unique_ptr<AssetWriter> makeAssetWriter(const std::filesystem::path& path,
                                                         FileType type) const = 0;
    /// Removes the file or link that stands at an output's path; never a folder, and never the
    /// file that is being converted. Failures are ignored.
    virtual void clearOutput(const std::filesystem::path& output,
                             const std::filesystem::path& source) const = 0;
};

/// A factory over the FFmpeg libraries. `files` outlives it and all that it makes.
std::unique_ptr<const Factory> makeFactory(const FileSystem& files);

/// The one over the usual file system. Lives as long as the process.
const Factory& defaultFactory();

} // namespace boxlift::media
