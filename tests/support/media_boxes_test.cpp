#include "support/media_boxes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <string>

#include "support/temp_folder.h"

namespace boxlift::test {
namespace {

using ::testing::ElementsAre;

/// Numbers below 256 keep the bytes readable.
std::string box(char size, const std::string& type, std::size_t payload) {
    return std::string(3, '\0') + size + type + std::string(payload, 'x');
}

class MediaBoxes : public ::testing::Test {
protected:
    std::filesystem::path write(const std::string& bytes) {
        return writeFile(m_folder.path() / "boxes", bytes);
    }

    TempFolder m_folder;
};

TEST_F(MediaBoxes, AreListedInFileOrder) {
    const auto boxes = topLevelBoxes(write(box(12, "ftyp", 4) + box(9, "moov", 1)));
    ASSERT_EQ(boxes.size(), 2U);
    EXPECT_EQ(boxes[0].type, "ftyp");
    EXPECT_EQ(boxes[0].size, 12U);
    EXPECT_EQ(boxes[1].type, "moov");
    EXPECT_EQ(boxes[1].offset, 12U);
}

TEST_F(MediaBoxes, MayHaveALongSize) {
    const std::string longSize = std::string(7, '\0') + '\x14';
    EXPECT_THAT(topLevelBoxTypes(write(box(1, "mdat", 0) + longSize + "xxxx" + box(8, "moov", 0))),
                ElementsAre("mdat", "moov"));
}

TEST_F(MediaBoxes, MayReachToTheEnd) {
    const auto boxes = topLevelBoxes(write(box(8, "ftyp", 0) + box(0, "mdat", 100)));
    ASSERT_EQ(boxes.size(), 2U);
    EXPECT_EQ(boxes[1].size, 108U);
}

TEST_F(MediaBoxes, MustFitIntoTheFile) {
    EXPECT_THROW(topLevelBoxes(write(box(50, "mdat", 4))), std::runtime_error);
    EXPECT_THROW(topLevelBoxes(write(box(4, "mdat", 4))), std::runtime_error);
    EXPECT_THROW(topLevelBoxes(write("abc")), std::runtime_error);
}

TEST_F(MediaBoxes, TellWhenAMovieEnds) {
    const std::string none(3, '\0');
    const std::string dates(8, 'd');
    // 10 ticks of 4 in a second.
    const std::string header =
        none + '\x1c' + "mvhd" + std::string(4, '\0') + dates + none + '\4' + none + '\n';
    const std::string movie = none + '\x2d' + "moov" + box(9, "udta", 1) + header;
    EXPECT_EQ(movieSeconds(write(box(12, "ftyp", 4) + movie)), 2.5);
}

TEST_F(MediaBoxes, TellInLongNumbersToo) {
    const std::string none(3, '\0');
    const std::string dates(16, 'd');
    const std::string header = none + '\x28' + "mvhd" + '\1' + none + dates + none + '\4' + none +
                               '\1' + std::string(4, '\0');
    const std::string movie = none + '\x30' + "moov" + header;
    EXPECT_EQ(movieSeconds(write(movie)), 4294967296.0 / 4);
}

TEST_F(MediaBoxes, MayTellNoEnd) {
    EXPECT_EQ(movieSeconds(write(box(12, "ftyp", 4))), std::nullopt);
    EXPECT_EQ(movieSeconds(write(box(8, "moov", 0))), std::nullopt);
}

} // namespace
} // namespace boxlift::test
