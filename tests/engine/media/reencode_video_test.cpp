#include "engine/media/reencode_video.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "engine/media/av/compat.h"

namespace boxlift::media {

namespace {

/// A container with some streams of pictures of 640x480.
class ReencodeVideoTest : public testing::Test {
protected:
    AVStream& addStream(std::int64_t bitRate = 0) {
        AVStream& stream = *avformat_new_stream(m_context.get(), nullptr);
        stream.codecpar->width = 640;
        stream.codecpar->height = 480;
        stream.codecpar->bit_rate = bitRate;
        return stream;
    }
    AVFormatContext& context() { return *m_context; }

    using Matrix = std::array<std::int32_t, 9>;
    static void setMatrix(AVStream& stream, const Matrix& matrix) {
        std::memcpy(av::newStreamSideData(stream, AV_PKT_DATA_DISPLAYMATRIX, sizeof(matrix)),
                    matrix.data(), sizeof(matrix));
    }
    static Matrix matrixOf(const AVStream& stream) {
        Matrix matrix{};
        const auto data = av::streamSideData(stream, AV_PKT_DATA_DISPLAYMATRIX);
        EXPECT_EQ(data.size(), sizeof(matrix));
        std::memcpy(matrix.data(), data.data(), std::min(data.size(), sizeof(matrix)));
        return matrix;
    }

private:
    av::OutputContextPtr m_context{avformat_alloc_context()};
};

constexpr std::int32_t one = 1 << 16;
constexpr std::int32_t last = 1 << 30;

TEST_F(ReencodeVideoTest, HasNoOrientationWhereTheSourceHasNone) {
    AVStream& to = addStream();
    setOrientation(to, addStream(), std::nullopt);
    EXPECT_TRUE(av::streamSideData(to, AV_PKT_DATA_DISPLAYMATRIX).empty());
}

TEST_F(ReencodeVideoTest, PutsATurnedPictureInPlaceForItsOwnSize) {
    AVStream& from = addStream();
    setMatrix(from, {0, one, 0, -one, 0, 0, 1080 * one, 0, last});
    AVStream& to = addStream();
    setOrientation(to, from, std::nullopt);
    EXPECT_EQ(matrixOf(to), (Matrix{0, one, 0, -one, 0, 0, 480 * one, 0, last}));
}

TEST_F(ReencodeVideoTest, TakesStretchingOutOfAMatrix) {
    AVStream& from = addStream();
    setMatrix(from, {one * 4 / 3, 0, 0, 0, one, 0, 0, 0, last});
    AVStream& to = addStream();
    setOrientation(to, from, std::nullopt);
    EXPECT_EQ(matrixOf(to), (Matrix{one, 0, 0, 0, one, 0, 0, 0, last}));
}

TEST_F(ReencodeVideoTest, TakesACompositionsTransformBeforeTheStreams) {
    AVStream& from = addStream();
    setMatrix(from, {0, one, 0, -one, 0, 0, 480 * one, 0, last});
    AVStream& to = addStream();
    setOrientation(to, from, AffineTransform{-1, 0, 0, -1, 640, 480});
    EXPECT_EQ(matrixOf(to), (Matrix{-one, 0, 0, 0, -one, 0, 640 * one, 480 * one, last}));
}

TEST_F(ReencodeVideoTest, MakesAMatrixWithoutAnyExtentUpright) {
    AVStream& from = addStream();
    setMatrix(from, {0, 0, 0, 0, 0, 0, 0, 0, last});
    AVStream& to = addStream();
    setOrientation(to, from, std::nullopt);
    EXPECT_EQ(matrixOf(to), (Matrix{one, 0, 0, 0, one, 0, 0, 0, last}));
}

TEST_F(ReencodeVideoTest, KnowsNoRateWhereNothingIsTold) {
    EXPECT_EQ(sourceVideoRate(context(), addStream()), 0);
}

TEST_F(ReencodeVideoTest, TakesTheSmallerOfTheStreamsRateAndTheRestOfTheFiles) {
    AVStream& pictures = addStream(9'000'000);
    addStream(200'000);
    EXPECT_EQ(sourceVideoRate(context(), pictures), 9'000'000);
    context().bit_rate = 4'200'000;
    EXPECT_EQ(sourceVideoRate(context(), pictures), 4'000'000);
    pictures.codecpar->bit_rate = 0;
    EXPECT_EQ(sourceVideoRate(context(), pictures), 4'000'000);
    pictures.codecpar->bit_rate = 1'500'000;
    EXPECT_EQ(sourceVideoRate(context(), pictures), 1'500'000);
}

} // namespace

} // namespace boxlift::media
