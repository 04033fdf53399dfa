#include "engine/lossless_copy.h"

#include <utility>

#include "engine/media/error.h"

namespace boxlift::Converter {

namespace {

bool isFinal(const std::exception& error) {
    const auto* mediaError = dynamic_cast<const media::Error*>(&error);
    return mediaError && mediaError->kind() == media::ErrorKind::nameTaken;
}

} // namespace

bool copyLosslessly(std::shared_ptr<const media::Asset> source, FileType type,
                    const std::filesystem::path& output, const Progress& progress,
                    const std::stop_token& stop, const media::Factory& factory) {
    try {
        exportAsset(std::move(source), ExportPreset::AVAssetExportPresetPassthrough, type, output,
                    progress, stop, factory);
        return true;
    } catch (const Cancelled&) {
        throw;
    } catch (const std::exception& error) {
        if (isFinal(error))
            throw;
        // The user asked for a file: an encoded one is better than an error.
        media::logError(error);
        return false;
    }
}

} // namespace boxlift::Converter
