#include "support/media_likeness.h"

#include <iostream>

#include <gtest/gtest.h>

#include "engine/media/error.h"
#include "input/conversion_runner.h"
#include "input/sources.h"
#include "support/corpus.h"
#include "support/temp_folder.h"

namespace boxlift::test {

namespace {

constexpr double alike = 0.98;
/// The files are dealt out, so that the parts run side by side.
constexpr int parts = 8;
/// So that the cases stay short: some seconds of small pictures.
constexpr double mostPixels = 30e6;

double pixelsIn(const ProbedStream& video) {
    return 1.0 * video.width * video.height * static_cast<double>(video.packets.size());
}

bool isCandidate(const CorpusFile& file) {
    if (file.videoTracks < 1)
        return false;
    const Analysis analysis = analyze(file.path);
    if (!analysis.info || !analysis.info->hasVideo)
        return false;
    const ProbedFile probed = probe(file.path);
    const auto tracks = probed.all(StreamKind::video);
    return !tracks.empty() && isPlain(*tracks.front()) && pixelsIn(*tracks.front()) <= mostPixels;
}

/// Every part of the files whose encodings can be compared with them.
class Likeness : public testing::TestWithParam<int> {
protected:
    /// Of the file encoded with this preset; nothing where it cannot be encoded or compared.
    std::optional<double> likenessOf(const CorpusFile& file, ExportPreset preset) const {
        const auto output = m_folder.path() / "out";
        std::filesystem::remove(output);
        try {
            Converter::exportAsset(media::defaultFactory().openAsset(file.path, {}), preset,
                                   FileType::AVFileTypeMPEG4, output, [](double) {});
        } catch (const media::Error&) {
            return std::nullopt; // Damaged or without a decoder, which other tests look at.
        }
        return likeness(file.path, output);
    }

    TempFolder m_folder;
};

} // namespace

TEST_P(Likeness, OfEncodedPicturesToRealOnesIsHigh) {
    const auto files = corpusFiles(m_folder.path());
    int compared = 0;
    for (std::size_t i = static_cast<std::size_t>(GetParam()); i < files.size(); i += parts) {
        if (!isCandidate(files[i]))
            continue;
        const bool isLarge = files[i].width > 1280 || files[i].height > 720;
        // Smaller pictures are encoded the same at every size.
        for (const auto preset : {ExportPreset::AVAssetExportPresetHighestQuality,
                                  ExportPreset::AVAssetExportPreset1280x720}) {
            if (preset != ExportPreset::AVAssetExportPresetHighestQuality && !isLarge)
                continue;
            const auto value = likenessOf(files[i], preset);
            compared += value ? 1 : 0;
            EXPECT_GE(value.value_or(1), alike) << files[i].name;
        }
    }
    std::cout << compared << " encodings compared\n";
    EXPECT_TRUE(compared > 0 || !hasRealCorpus());
}

INSTANTIATE_TEST_SUITE_P(Parts, Likeness, testing::Range(0, parts));

TEST(LikenessOfPictures, IsLowForOthers) {
    const TempFolder folder;
    MediaSpec first{.format = "mov", .video = {{.encoderOptions = {{"crf", "1"}}}}};
    MediaSpec second = first;
    second.video[0].encoderOptions = {{"crf", "45"}};
    const auto source = makeSource(folder.path(), "first.mov", first);
    EXPECT_NEAR(likeness(source, source).value_or(0), 1, 0.0001);
    const auto other = makeSource(folder.path(), "second.mov", second);
    EXPECT_LT(likeness(source, other).value_or(1), 0.9);
}

} // namespace boxlift::test
