#include "engine/media/encode_settings.h"

#include <gtest/gtest.h>

#include <ostream>

namespace boxlift::media {

void PrintTo(PictureSize size, std::ostream* out) {
    *out << size.width << 'x' << size.height;
}

namespace {

constexpr auto highest = ExportPreset::AVAssetExportPresetHighestQuality;
constexpr auto p1080 = ExportPreset::AVAssetExportPreset1920x1080;
constexpr auto p720 = ExportPreset::AVAssetExportPreset1280x720;

struct FitRow {
    const char* what;
    PictureSize stored;
    PixelAspect aspect;
    ExportPreset preset;
    PictureSize expected;
};

constexpr FitRow fits[] = {
    {"fits exactly", {1280, 720}, {1, 1}, p720, {1280, 720}},
    {"one step down", {1920, 1080}, {1, 1}, p720, {1280, 720}},
    {"never enlarged", {640, 360}, {1, 1}, p720, {640, 360}},
    {"never enlarged to 1080", {1280, 720}, {1, 1}, p1080, {1280, 720}},
    {"4K", {3840, 2160}, {1, 1}, p1080, {1920, 1080}},
    {"cinema 4K is bound by its width", {4096, 2160}, {1, 1}, p1080, {1920, 1012}},
    {"4K stays", {3840, 2160}, {1, 1}, highest, {3840, 2160}},
    {"portrait turns the box", {1080, 1920}, {1, 1}, p720, {720, 1280}},
    {"portrait at 1080 stays", {1080, 1920}, {1, 1}, p1080, {1080, 1920}},
    {"a stored landscape that is shown upright", {1920, 1080}, {1, 1}, p720, {1280, 720}},
    {"square is bound by the box's height", {2000, 2000}, {1, 1}, p720, {720, 720}},
    {"4:3 in a wide box", {1440, 1080}, {1, 1}, p720, {960, 720}},
    {"HDV gets square pixels", {1440, 1080}, {4, 3}, p1080, {1920, 1080}},
    {"HDV at full size too", {1440, 1080}, {4, 3}, highest, {1920, 1080}},
    {"HDV one step down", {1440, 1080}, {4, 3}, p720, {1280, 720}},
    {"PAL wide", {720, 576}, {16, 11}, highest, {1046, 576}},
    {"PAL wide at 720", {720, 576}, {16, 11}, p720, {1046, 576}},
    {"NTSC narrow pixels", {720, 480}, {8, 9}, highest, {640, 480}},
    {"wide pixels turn the box", {720, 900}, {2, 1}, p720, {1152, 720}},
    {"unknown aspect is square", {720, 576}, {0, 1}, highest, {720, 576}},
    {"an absurd aspect is square", {720, 576}, {1, 1000}, highest, {720, 576}},
    {"another absurd aspect", {720, 576}, {1000, 1}, highest, {720, 576}},
    {"odd sides", {293, 177}, {1, 1}, highest, {292, 176}},
    {"odd after scaling", {1001, 2003}, {1, 1}, p720, {638, 1280}},
    {"a single pixel", {1, 1}, {1, 1}, highest, {2, 2}},
    {"a column", {1, 1000}, {1, 1}, p720, {2, 1000}},
    {"a long strip", {10000, 2}, {1, 1}, p720, {1280, 2}},
    {"a high strip", {3, 9000}, {1, 1}, p1080, {2, 1920}},
    {"larger than the encoder takes", {20000, 10000}, {1, 1}, highest, {16384, 8192}},
};

TEST(EncodeSettings, FitsEveryShapeIntoItsBox) {
    for (const FitRow& row : fits)
        EXPECT_EQ(fitted(row.stored, row.aspect, row.preset), row.expected) << row.what;
}

TEST(EncodeSettings, KeepEveryFittedSizeEvenInsideTheBoxAndNotEnlarged) {
    for (int width = 1; width < 4000; width += 37)
        for (int height = 1; height < 4000; height += 41) {
            const PictureSize size = fitted({width, height}, {1, 1}, p720);
            EXPECT_EQ(size.width % 2 + size.height % 2, 0);
            EXPECT_LE(std::max(size.width, size.height), 1280);
            EXPECT_LE(std::min(size.width, size.height), 720);
            EXPECT_LE(size.width, std::max(2, width));
            EXPECT_LE(size.height, std::max(2, height));
        }
}

TEST(EncodeSettings, CapTheRateByTheSizeOfTheOutput) {
    EXPECT_EQ(encodeSettings({1280, 720}, {1, 1}, 0, highest).rateCap, 10'000'000);
    EXPECT_EQ(encodeSettings({720, 1280}, {1, 1}, 0, highest).rateCap, 10'000'000);
    EXPECT_EQ(encodeSettings({1920, 1080}, {1, 1}, 0, highest).rateCap, 20'000'000);
    EXPECT_EQ(encodeSettings({3840, 2160}, {1, 1}, 0, highest).rateCap, 45'000'000);
    EXPECT_EQ(encodeSettings({3840, 2160}, {1, 1}, 0, p720).rateCap, 10'000'000);
}

TEST(EncodeSettings, CapTheRateByThatOfTheSource) {
    EXPECT_EQ(encodeSettings({1280, 720}, {1, 1}, 4'000'000, highest).rateCap, 7'000'000);
    EXPECT_EQ(encodeSettings({1280, 720}, {1, 1}, 50'000'000, highest).rateCap, 10'000'000);
}

TEST(EncodeSettings, IgnoreASourceRateThatIsTooLowToMeanMuch) {
    EXPECT_EQ(encodeSettings({1280, 720}, {1, 1}, 999'999, highest).rateCap, 10'000'000);
    EXPECT_EQ(encodeSettings({1280, 720}, {1, 1}, 1'000'000, highest).rateCap, 1'750'000);
}

TEST(EncodeSettings, BufferTwoSecondsOfTheCap) {
    EXPECT_EQ(encodeSettings({1280, 720}, {1, 1}, 4'000'000, highest).buffer, 14'000'000);
}

} // namespace

} // namespace boxlift::media
