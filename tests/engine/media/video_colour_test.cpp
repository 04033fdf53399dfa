#include "engine/media/video_colour.h"

#include <gtest/gtest.h>

namespace boxlift::media {

namespace {

constexpr PictureSize standard{720, 576};
constexpr PictureSize high{1280, 720};
constexpr VideoColour untagged{};
constexpr VideoColour bt709{AVCOL_PRI_BT709, AVCOL_TRC_BT709, AVCOL_SPC_BT709, AVCOL_RANGE_MPEG};

TEST(VideoColour, StaysUntaggedWhereTheSourceIs) {
    EXPECT_EQ(encodedColour(untagged, AV_PIX_FMT_YUV420P, high), untagged);
}

TEST(VideoColour, KeepsTheTagsOfStandardRange) {
    const VideoColour colour{AVCOL_PRI_SMPTE170M, AVCOL_TRC_SMPTE170M, AVCOL_SPC_SMPTE170M,
                             AVCOL_RANGE_MPEG};
    EXPECT_EQ(encodedColour(colour, AV_PIX_FMT_YUV422P, standard), colour);
}

TEST(VideoColour, MakesHighRangeStandard) {
    for (const auto transfer : {AVCOL_TRC_SMPTE2084, AVCOL_TRC_ARIB_STD_B67}) {
        const VideoColour colour{AVCOL_PRI_BT2020, transfer, AVCOL_SPC_BT2020_NCL,
                                 AVCOL_RANGE_MPEG};
        EXPECT_TRUE(colour.isHighRange());
        EXPECT_EQ(encodedColour(colour, AV_PIX_FMT_YUV420P10, high), bt709);
    }
}

TEST(VideoColour, MakesFullRangeLimited) {
    VideoColour full = bt709;
    full.range = AVCOL_RANGE_JPEG;
    EXPECT_EQ(encodedColour(full, AV_PIX_FMT_YUV420P, high), bt709);
    EXPECT_EQ(encodedColour(untagged, AV_PIX_FMT_YUVJ420P, high).range, AVCOL_RANGE_MPEG);
}

TEST(VideoColour, GivesRgbTheMatrixThatPlayersTakeForItsSize) {
    const VideoColour rgb{AVCOL_PRI_UNSPECIFIED, AVCOL_TRC_UNSPECIFIED, AVCOL_SPC_RGB,
                          AVCOL_RANGE_JPEG};
    EXPECT_EQ(encodedColour(rgb, AV_PIX_FMT_GBRP, high).matrix, AVCOL_SPC_BT709);
    EXPECT_EQ(encodedColour(rgb, AV_PIX_FMT_RGB24, standard).matrix, AVCOL_SPC_SMPTE170M);
    EXPECT_EQ(encodedColour(untagged, AV_PIX_FMT_PAL8, standard).matrix, AVCOL_SPC_SMPTE170M);
}

TEST(VideoColour, DropsTheRgbMatrixFromPicturesThatAreNone) {
    VideoColour wrong = bt709;
    wrong.matrix = AVCOL_SPC_RGB;
    EXPECT_EQ(encodedColour(wrong, AV_PIX_FMT_YUV420P, high).matrix, AVCOL_SPC_UNSPECIFIED);
}

TEST(VideoColour, CompletesHighRangeWithBt2020) {
    const VideoColour bare{AVCOL_PRI_UNSPECIFIED, AVCOL_TRC_SMPTE2084, AVCOL_SPC_UNSPECIFIED,
                           AVCOL_RANGE_UNSPECIFIED};
    const VideoColour complete{AVCOL_PRI_BT2020, AVCOL_TRC_SMPTE2084, AVCOL_SPC_BT2020_NCL,
                               AVCOL_RANGE_MPEG};
    EXPECT_EQ(completedHighRange(bare, AV_PIX_FMT_YUV420P10), complete);
}

TEST(VideoColour, TakesFromTheStreamWhatAFrameLeavesOut) {
    VideoColour frame;
    frame.matrix = AVCOL_SPC_SMPTE170M;
    const VideoColour completed = frame.completedBy(bt709);
    EXPECT_EQ(completed.matrix, AVCOL_SPC_SMPTE170M);
    EXPECT_EQ(completed.primaries, AVCOL_PRI_BT709);
    EXPECT_EQ(completed.transfer, AVCOL_TRC_BT709);
    EXPECT_EQ(completed.range, AVCOL_RANGE_MPEG);
}

} // namespace

} // namespace boxlift::media
