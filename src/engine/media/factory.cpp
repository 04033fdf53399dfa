#include "engine/media/factory.h"

#include "engine/media/aac_file_writer.h"
#include "engine/media/audio_mix_reader.h"
#include "engine/media/file_asset.h"
#include "engine/media/file_composition.h"
#include "engine/media/passthrough_session.h"
#include "engine/media/reencode_session.h"

namespace boxlift::media {

namespace {

class FfmpegFactory : public Factory {
public:
    explicit FfmpegFactory(const FileSystem& files) : m_files(files) {}

    std::shared_ptr<const Asset> openAsset(const std::filesystem::path& path,
                                           std::stop_token stop) const override {
        return FileAsset::open(m_files.openInput(path), std::move(stop));
    }

    std::shared_ptr<MutableComposition> makeComposition() const override {
        return std::make_shared<FileComposition>();
    }

    std::unique_ptr<ExportSession> makeExportSession(std::shared_ptr<const Asset> asset,
                                                     ExportPreset preset,
                                                     std::stop_token stop) const override {
        auto selection = Selection::of(*asset);
        if (!selection)
            return nullptr;
        auto session = makeSession(std::move(*selection), preset, std::move(stop));
        session->setFileSystem(m_files);
        return session;
    }

    std::unique_ptr<AssetReader>
    makeAssetReader(std::shared_ptr<const Asset> asset) const override {
        return std::make_unique<AudioMixReader>(std::move(asset));
    }

    std::unique_ptr<AssetWriter> makeAssetWriter(const std::filesystem::path& path,
                                                 FileType) const override {
        return std::make_unique<AacFileWriter>(OutputPlace(path, m_files));
    }

    void clearOutput(const std::filesystem::path& output,
                     const std::filesystem::path& source) const override {
        m_files.clearOutput(output, source);
    }

private:
    static std::unique_ptr<FileExportSession> makeSession(Selection selection, ExportPreset preset,
                                                          std::stop_token stop) {
        if (preset == ExportPreset::AVAssetExportPresetPassthrough)
            return std::make_unique<PassthroughSession>(std::move(selection), std::move(stop));
        return makeReencodeSession(std::move(selection), preset, std::move(stop));
    }

    const FileSystem& m_files;
};

} // namespace

std::unique_ptr<const Factory> makeFactory(const FileSystem& files) {
    return std::make_unique<FfmpegFactory>(files);
}

const Factory& defaultFactory() {
    static const FfmpegFactory factory(defaultFileSystem());
    return factory;
}

} // namespace boxlift::media
