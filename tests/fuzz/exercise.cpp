#include "fuzz/exercise.h"

#include <array>

#include "engine/converter.h"
#include "engine/media/error.h"
#include "fuzz/memory_file.h"
#include "worker/handed_files.h"

namespace boxlift::test {

namespace {

constexpr const char* source = "source";
constexpr const char* output = "output";
constexpr int bitRate = 128'000;

void ignoreProgress(double) {}

/// The engine's way to one file in memory and to an output beside it.
class Files {
public:
    explicit Files(std::string_view file)
        : m_files(memoryFile(file), memoryFile({})), m_factory(media::makeFactory(m_files)) {}

    const media::Factory& factory() const { return *m_factory; }

private:
    const worker::HandedFiles m_files;
    const std::unique_ptr<const media::Factory> m_factory;
};

template <typename Operation>
bool succeeds(Operation operation) {
    try {
        operation();
        return true;
    } catch (const ConvertError&) {
        return false;
    } catch (const media::Error&) {
        return false;
    }
}

} // namespace

std::optional<MediaInfo> analyzeBytes(std::string_view file) {
    const Files files(file);
    try {
        return Converter::analyze(source, {}, files.factory());
    } catch (const ConvertError&) {
        return std::nullopt;
    }
}

bool copyBytes(std::string_view file, FileType type, bool removesAudio) {
    const Files files(file);
    return succeeds([&] {
        std::shared_ptr<const media::Asset> asset = files.factory().openAsset(source, {});
        if (removesAudio)
            asset = Converter::composition(*asset, true, false, files.factory());
        Converter::exportAsset(asset, ExportPreset::AVAssetExportPresetPassthrough, type, output,
                               ignoreProgress, {}, files.factory());
    });
}

bool transcodeBytes(std::string_view file) {
    const Files files(file);
    return succeeds([&] {
        Converter::transcodeAudio(files.factory().openAsset(source, {}), bitRate, output,
                                  ignoreProgress, {}, files.factory());
    });
}

FileType typeFor(std::size_t number) {
    constexpr std::array types{FileType::AVFileTypeMPEG4, FileType::AVFileTypeQuickTimeMovie,
                               FileType::AVFileTypeAppleM4A};
    return types[number % types.size()];
}

} // namespace boxlift::test
