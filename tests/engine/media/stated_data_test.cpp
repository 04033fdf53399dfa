#include "engine/media/stated_data.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "engine/media/av/demuxer.h"
#include "engine/media/error.h"
#include "engine/media/source_check.h"
#include "support/media_generator.h"
#include "support/temp_folder.h"

namespace boxlift::media {
namespace {

constexpr int seconds = 4;
constexpr std::int64_t bytes = std::int64_t{seconds} * 44100 * 2 * 2;

class StatedDataTest : public testing::TestWithParam<const char*> {
protected:
    std::filesystem::path make() const {
        const auto path = m_folder.path() / "sound";
        test::MediaSpec spec;
        spec.format = GetParam();
        spec.seconds = seconds;
        spec.audio = {{.codec = "pcm_s16le"}};
        test::makeMedia(path, spec);
        return path;
    }

    static void check(const std::filesystem::path& path) {
        const auto file = InputFile::open(path);
        const auto demuxer = av::Demuxer::open(file, av::ProbeDepth::streams, {});
        checkStatedData(demuxer->context(), *file);
    }

    test::TempFolder m_folder;
};

TEST_P(StatedDataTest, FindsTheSamplesOfAWholeFile) {
    const auto path = make();
    const auto data = statedData(*InputFile::open(path));
    ASSERT_TRUE(data);
    EXPECT_EQ(data->size, bytes);
    EXPECT_LE(data->offset + data->size, static_cast<std::int64_t>(file_size(path)));
    EXPECT_NO_THROW(check(path));
}

TEST_P(StatedDataTest, StatesTheFullSizeOfAFileCutShort) {
    const auto path = make();
    resize_file(path, file_size(path) / 2);
    const auto data = statedData(*InputFile::open(path));
    ASSERT_TRUE(data);
    EXPECT_EQ(data->size, bytes);
    try {
        check(path);
        FAIL() << "half a file passed for a whole one";
    } catch (const Error& error) {
        EXPECT_EQ(error.kind(), ErrorKind::sourceEndsEarly);
    }
}

TEST_P(StatedDataTest, ForgivesLessThanASecond) {
    const auto path = make();
    resize_file(path, file_size(path) - 44100 * 2 * 2 / 2);
    EXPECT_NO_THROW(check(path));
}

INSTANTIATE_TEST_SUITE_P(Containers, StatedDataTest, testing::Values("wav", "w64", "caf"),
                         [](const auto& info) { return std::string(info.param); });

TEST(StatedData, IsNothingInOtherFiles) {
    const test::TempFolder folder;
    const auto path = folder.path() / "sound.aiff";
    test::makeMedia(path, {.format = "aiff", .audio = {{.codec = "pcm_s16be"}}});
    EXPECT_FALSE(statedData(*InputFile::open(path)));
}

TEST(StatedData, IsNothingWhereARecorderLeftTheSizeOpen) {
    const test::TempFolder folder;
    const auto path = folder.path() / "sound.wav";
    std::string header = "RIFF\xff\xff\xff\xffWAVEdata\xff\xff\xff\xff";
    test::writeFile(path, header + std::string(100, 'x'));
    EXPECT_FALSE(statedData(*InputFile::open(path)));
}

} // namespace
} // namespace boxlift::media
