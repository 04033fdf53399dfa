#include "support/media_likeness.h"

#include <string_view>

#include <gtest/gtest.h>

#include "input/conversion_runner.h"
#include "input/sources.h"
#include "support/corpus.h"
#include "support/temp_folder.h"

namespace boxlift::test {

namespace {

constexpr double alike = 0.98;
/// Twenty pictures of a coarse encoding, which at the highest quality come to 0.978.
constexpr std::string_view coarse = "fuzzing-corpus/test_av_vp9_mp3_320x240.mp4";
constexpr double coarseLikeness = 0.975;
/// So that the case stays short; the others are much the same.
constexpr int comparedFiles = 10;
constexpr std::int64_t smallBytes = 500'000;

bool isCandidate(const CorpusFile& file) {
    return file.videoTracks == 1 && file.bytes <= smallBytes && file.seconds.value_or(99) <= 6 &&
           file.seconds.value_or(0) >= 0.5 && file.width * file.height <= 1280 * 720 &&
           !file.tags.contains("interlaced") && !file.tags.contains("truncated") &&
           !file.tags.contains("decode-errors");
}

/// The likeness of the file encoded at its own size; nothing where it cannot be told.
std::optional<double> likenessOf(const CorpusFile& file) {
    const Analysis analysis = analyze(file.path);
    if (!analysis.info || !analysis.info->hasVideo)
        return std::nullopt;
    const auto tracks = probe(file.path).all(StreamKind::video);
    if (tracks.empty() || !isPlain(*tracks.front()))
        return std::nullopt;
    const TempFolder folder;
    const auto output = folder.path() / "out";
    Converter::exportAsset(media::defaultFactory().openAsset(file.path, {}),
                           ExportPreset::AVAssetExportPresetHighestQuality,
                           FileType::AVFileTypeMPEG4, output, [](double) {});
    return likeness(file.path, output);
}

} // namespace

TEST(Likeness, OfEncodedPicturesToRealOnesIsHigh) {
    const TempFolder folder;
    int compared = 0;
    for (const CorpusFile& file : corpusFiles(folder.path())) {
        if (!isCandidate(file) || compared == comparedFiles)
            continue;
        const auto value = likenessOf(file);
        compared += value ? 1 : 0;
        EXPECT_GE(value.value_or(1), file.name == coarse ? coarseLikeness : alike) << file.name;
    }
    EXPECT_GE(compared, 1);
}

TEST(Likeness, IsLowForOtherPictures) {
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
