#include "engine/media/video_filter.h"

#include <gtest/gtest.h>

#include "engine/media/av/compat.h"
#include "engine/media/picture_maker.h"

namespace boxlift::media {

namespace {

using test::FrameCollector;
using test::makePicture;
using test::valueAt;

constexpr AVRational milliseconds{1, 1000};

void setInterlaced(AVFrame& frame) {
#if LIBAVUTIL_VERSION_MAJOR >= 59
    frame.flags |= AV_FRAME_FLAG_INTERLACED | AV_FRAME_FLAG_TOP_FIELD_FIRST;
#else
    frame.interlaced_frame = 1;
    frame.top_field_first = 1;
#endif
}

/// What becomes of one picture.
av::FramePtr filtered(av::FramePtr picture, PictureSize size, const VideoColour& tags = {}) {
    VideoFilter filter(size, tags, milliseconds, "test");
    av::FramePtr result;
    const VideoFilter::Sink sink = [&](AVFrame& frame) {
        EXPECT_FALSE(result) << "more than one picture";
        result = av::makeFrame();
        av_frame_move_ref(result.get(), &frame);
    };
    filter.push(*picture, sink);
    filter.finish(sink);
    if (!result)
        throw std::runtime_error("no picture came out");
    return result;
}

void expectEncodable(const AVFrame& frame, PictureSize size) {
    EXPECT_EQ(frame.format, AV_PIX_FMT_YUV420P);
    EXPECT_EQ(frame.width, size.width);
    EXPECT_EQ(frame.height, size.height);
    EXPECT_EQ(frame.sample_aspect_ratio.num, frame.sample_aspect_ratio.den);
    EXPECT_FALSE(av::isInterlaced(frame));
}

struct FormatRow {
    const char* what;
    AVPixelFormat format;
    test::PlaneValues values;
};

const FormatRow grayPictures[] = {
    {"4:2:0", AV_PIX_FMT_YUV420P, {120, 128, 128}},
    {"4:2:2", AV_PIX_FMT_YUV422P, {120, 128, 128}},
    {"4:4:4", AV_PIX_FMT_YUV444P, {120, 128, 128}},
    {"4:1:0", AV_PIX_FMT_YUV410P, {120, 128, 128}},
    {"10 bits", AV_PIX_FMT_YUV420P10LE, {480, 512, 512}},
    {"12 bits 4:4:4", AV_PIX_FMT_YUV444P12LE, {1920, 2048, 2048}},
    {"opaque alpha", AV_PIX_FMT_YUVA420P, {120, 128, 128, 255}},
    {"opaque alpha with 12 bits", AV_PIX_FMT_YUVA444P12LE, {1920, 2048, 2048, 4095}},
    {"RGB", AV_PIX_FMT_GBRP, {121, 121, 121}},
    {"full range", AV_PIX_FMT_YUVJ420P, {121, 128, 128}},
};

TEST(VideoFilter, BringsEveryFormatToOne) {
    for (const FormatRow& row : grayPictures) {
        SCOPED_TRACE(row.what);
        const auto picture = filtered(makePicture(row.format, 64, 48, row.values), {32, 24});
        expectEncodable(*picture, {32, 24});
        EXPECT_NEAR(valueAt(*picture, 0, 16, 12), 120, 1);
        EXPECT_NEAR(valueAt(*picture, 1, 8, 6), 128, 1);
        EXPECT_NEAR(valueAt(*picture, 2, 8, 6), 128, 1);
    }
}

TEST(VideoFilter, MakesOddSizesEven) {
    for (const AVPixelFormat format : {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV422P, AV_PIX_FMT_YUV444P})
        expectEncodable(*filtered(makePicture(format, 293, 177, {120, 128, 128}), {292, 176}),
                        {292, 176});
}

TEST(VideoFilter, TakesTheSmallestPictures) {
    expectEncodable(*filtered(makePicture(AV_PIX_FMT_YUV420P, 1, 1, {120, 128, 128}), {2, 2}),
                    {2, 2});
    auto interlaced = makePicture(AV_PIX_FMT_YUV420P, 2, 2, {120, 128, 128});
    setInterlaced(*interlaced);
    EXPECT_EQ(filtered(std::move(interlaced), {2, 2})->width, 2);
}

TEST(VideoFilter, MakesFullRangeLimited) {
    auto tagged = makePicture(AV_PIX_FMT_YUV420P, 32, 32, {255, 128, 128});
    tagged->color_range = AVCOL_RANGE_JPEG;
    const auto picture = filtered(std::move(tagged), {32, 32});
    EXPECT_NEAR(valueAt(*picture, 0, 5, 5), 235, 1);
    EXPECT_EQ(picture->color_range, AVCOL_RANGE_MPEG);
}

TEST(VideoFilter, LeavesLimitedRangeAlone) {
    const auto picture =
        filtered(makePicture(AV_PIX_FMT_YUV420P, 32, 32, {235, 90, 200}), {32, 32});
    EXPECT_EQ(valueAt(*picture, 0, 5, 5), 235);
    EXPECT_EQ(valueAt(*picture, 1, 5, 5), 90);
    EXPECT_EQ(valueAt(*picture, 2, 5, 5), 200);
    EXPECT_EQ(picture->color_range, AVCOL_RANGE_UNSPECIFIED);
}

TEST(VideoFilter, PutsTransparentPicturesOnBlack) {
    const FormatRow transparent[] = {
        {"YUV", AV_PIX_FMT_YUVA420P, {200, 90, 200, 0}},
        {"YUV with 12 bits", AV_PIX_FMT_YUVA444P12LE, {3200, 1440, 3200, 0}},
        {"RGB", AV_PIX_FMT_GBRAP, {255, 255, 255, 0}},
    };
    for (const FormatRow& row : transparent) {
        SCOPED_TRACE(row.what);
        const auto picture = filtered(makePicture(row.format, 32, 32, row.values), {32, 32});
        EXPECT_NEAR(valueAt(*picture, 0, 16, 16), 16, 1);
        EXPECT_NEAR(valueAt(*picture, 1, 8, 8), 128, 1);
        EXPECT_NEAR(valueAt(*picture, 2, 8, 8), 128, 1);
    }
}

TEST(VideoFilter, MixesHalfTransparentPicturesWithBlack) {
    const auto picture =
        filtered(makePicture(AV_PIX_FMT_YUVA420P, 32, 32, {216, 128, 128, 128}), {32, 32});
    EXPECT_NEAR(valueAt(*picture, 0, 16, 16), 116, 2);
}

TEST(VideoFilter, ConvertsRgbWithTheMatrixOfItsSize) {
    const test::PlaneValues red{0, 0, 255};
    const auto small = filtered(makePicture(AV_PIX_FMT_GBRP, 64, 48, red), {64, 48});
    EXPECT_NEAR(valueAt(*small, 0, 5, 5), 81, 2);
    EXPECT_EQ(small->colorspace, AVCOL_SPC_SMPTE170M);
    const auto large = filtered(makePicture(AV_PIX_FMT_GBRP, 1280, 720, red), {1280, 720});
    EXPECT_NEAR(valueAt(*large, 0, 5, 5), 63, 2);
    EXPECT_EQ(large->colorspace, AVCOL_SPC_BT709);
}

/// A gray PQ or HLG picture's luma after tone mapping.
int toneMapped(AVColorTransferCharacteristic transfer, int luma) {
    auto source = makePicture(AV_PIX_FMT_YUV420P10LE, 64, 64, {luma, 512, 512});
    source->color_trc = transfer;
    const auto picture = filtered(std::move(source), {32, 32});
    expectEncodable(*picture, {32, 32});
    EXPECT_EQ(VideoColour::of(*picture),
              (VideoColour{AVCOL_PRI_BT709, AVCOL_TRC_BT709, AVCOL_SPC_BT709, AVCOL_RANGE_MPEG}));
    return valueAt(*picture, 0, 16, 16);
}

TEST(VideoFilter, MapsPqToStandardRange) {
    const int black = toneMapped(AVCOL_TRC_SMPTE2084, 64);
    const int white = toneMapped(AVCOL_TRC_SMPTE2084, 509);  // 100 cd/m²
    const int bright = toneMapped(AVCOL_TRC_SMPTE2084, 723); // 1000 cd/m²
    EXPECT_NEAR(black, 16, 2);
    EXPECT_GT(white, 110);
    EXPECT_LT(white, 200);
    EXPECT_GT(bright, white + 30);
    EXPECT_LE(bright, 236);
}

TEST(VideoFilter, MapsHlgToStandardRange) {
    const int middle = toneMapped(AVCOL_TRC_ARIB_STD_B67, 502);
    const int bright = toneMapped(AVCOL_TRC_ARIB_STD_B67, 900);
    EXPECT_GT(middle, 60);
    EXPECT_GT(bright, middle + 30);
}

av::FramePtr highRangePicture(int width, int height, const test::PlaneValues& values) {
    auto picture = makePicture(AV_PIX_FMT_YUV420P10LE, width, height, values);
    picture->color_trc = AVCOL_TRC_SMPTE2084;
    return picture;
}

TEST(VideoFilter, MapsHighRangeAlikeWhateverBecomesOfTheSize) {
    const test::PlaneValues orange{450, 440, 600};
    // By hand: PQ's and BT.2020's formulas, BT.709's primaries, the curve that rolls off with a
    // peak of 1000 cd/m², BT.1886's gamma of 2.4.
    const int expected[] = {87, 103, 202};
    struct {
        const char* what;
        PictureSize from;
        PictureSize to;
    } const sizes[] = {
        {"the same", {64, 48}, {64, 48}},     {"smaller", {64, 48}, {32, 24}},
        {"uneven steps", {64, 48}, {50, 38}}, {"narrower", {64, 48}, {48, 48}},
        {"larger", {32, 24}, {64, 48}},       {"wider and lower", {48, 64}, {64, 48}},
        {"odd", {65, 49}, {64, 48}},          {"odd chroma", {66, 50}, {64, 48}},
        {"smallest", {1, 1}, {2, 2}},
    };
    for (const auto& row : sizes) {
        SCOPED_TRACE(row.what);
        const auto picture =
            filtered(highRangePicture(row.from.width, row.from.height, orange), row.to);
        expectEncodable(*picture, row.to);
        for (const int plane : {0, 1, 2})
            EXPECT_NEAR(valueAt(*picture, plane, 0, 0), expected[plane], 1);
    }
}

/// 64 by 64 pixels, dark but for some.
template <typename IsBright>
av::FramePtr twoTone(const IsBright& isBright) {
    constexpr int size = 64;
    auto picture = highRangePicture(size, size, {64, 512, 512});
    for (int y = 0; y < size; ++y) {
        auto* line = reinterpret_cast<std::uint16_t*>(picture->data[0] + y * picture->linesize[0]);
        for (int x = 0; x < size; ++x)
            if (isBright(x, y))
                line[x] = 600;
    }
    return picture;
}

TEST(VideoFilter, ScalesHighRangeWithoutMovingIt) {
    const auto columns = filtered(twoTone([](int x, int) { return x >= 32; }), {32, 32});
    const auto rows = filtered(twoTone([](int, int y) { return y >= 32; }), {32, 32});
    const int bright = valueAt(*columns, 0, 31, 16);
    ASSERT_GT(bright, 120);
    for (int i = 0; i < 32; ++i) {
        const int expected = i < 16 ? 16 : bright;
        // Bicubic scaling looks at four neighbours here.
        const int tolerance = i < 14 || i > 17 ? 1 : 40;
        EXPECT_NEAR(valueAt(*columns, 0, i, 16), expected, tolerance) << "column " << i;
        EXPECT_NEAR(valueAt(*rows, 0, 16, i), expected, tolerance) << "row " << i;
    }
}

TEST(VideoFilter, BlendsNeighboursWhereHighRangeGetsSmaller) {
    const auto columns = filtered(twoTone([](int x, int) { return x % 2 == 1; }), {32, 32});
    const auto rows = filtered(twoTone([](int, int y) { return y % 2 == 1; }), {32, 32});
    const int middle =
        valueAt(*filtered(highRangePicture(64, 64, {332, 512, 512}), {32, 32}), 0, 5, 5);
    for (int i = 4; i < 28; ++i) {
        EXPECT_NEAR(valueAt(*columns, 0, i, 16), middle, 2) << "column " << i;
        EXPECT_NEAR(valueAt(*rows, 0, 16, i), middle, 2) << "row " << i;
    }
}

TEST(VideoFilter, TakesSmallHighRangePicturesThatHaveFields) {
    auto picture = highRangePicture(8, 8, {509, 512, 512});
    setInterlaced(*picture);
    EXPECT_EQ(filtered(std::move(picture), {4, 4})->width, 4);
}

TEST(VideoFilter, TakesTheStreamsTagsForUntaggedPictures) {
    const VideoColour tags{AVCOL_PRI_BT2020, AVCOL_TRC_SMPTE2084, AVCOL_SPC_BT2020_NCL,
                           AVCOL_RANGE_MPEG};
    const auto picture =
        filtered(makePicture(AV_PIX_FMT_YUV420P10LE, 64, 64, {509, 512, 512}), {64, 64}, tags);
    EXPECT_EQ(picture->color_trc, AVCOL_TRC_BT709);
}

/// A picture of black and white rows in turn; `firstWhite` is 0 or 1.
av::FramePtr combed(std::int64_t pts, int firstWhite = 1) {
    auto picture = makePicture(AV_PIX_FMT_YUV420P, 64, 64, {16, 128, 128}, pts);
    for (int y = firstWhite; y < 64; y += 2)
        std::fill_n(picture->data[0] + y * picture->linesize[0], 64, std::uint8_t{235});
    return picture;
}

int difference(const AVFrame& frame, int row) {
    return std::abs(valueAt(frame, 0, 32, row) - valueAt(frame, 0, 32, row + 1));
}

TEST(VideoFilter, DeinterlacesPicturesThatHaveFields) {
    FrameCollector frames;
    VideoFilter filter({64, 64}, {}, milliseconds, "test");
    int white = 0;
    for (const std::int64_t pts : {0, 40, 80, 125}) {
        // What stands still would rightly stay sharp.
        auto picture = combed(pts, white++ % 2);
        setInterlaced(*picture);
        filter.push(*picture, frames.sink());
    }
    filter.finish(frames.sink());
    ASSERT_EQ(frames.count(), 4U);
    const std::int64_t expected[] = {0, 40, 80, 125};
    for (std::size_t i = 0; i < frames.count(); ++i) {
        expectEncodable(frames[i], {64, 64});
        EXPECT_EQ(frames[i].pts, expected[i]);
        EXPECT_LT(difference(frames[i], 31), 100);
    }
}

TEST(VideoFilter, LeavesProgressivePicturesSharp) {
    const auto picture = filtered(combed(0), {64, 64});
    EXPECT_EQ(difference(*picture, 31), 235 - 16);
}

TEST(VideoFilter, KeepsUnevenTimeStamps) {
    FrameCollector frames;
    VideoFilter filter({32, 32}, {}, milliseconds, "test");
    for (const std::int64_t pts : {3, 10, 11, 900})
        filter.push(*makePicture(AV_PIX_FMT_YUV422P, 64, 64, {120, 128, 128}, pts), frames.sink());
    filter.finish(frames.sink());
    ASSERT_EQ(frames.count(), 4U);
    EXPECT_EQ(frames[0].pts, 3);
    EXPECT_EQ(frames[1].pts, 10);
    EXPECT_EQ(frames[2].pts, 11);
    EXPECT_EQ(frames[3].pts, 900);
}

TEST(VideoFilter, FollowsPicturesThatChangeInMidStream) {
    FrameCollector frames;
    VideoFilter filter({64, 64}, {}, milliseconds, "test");
    filter.push(*makePicture(AV_PIX_FMT_YUV420P, 64, 64, {120, 128, 128}, 0), frames.sink());
    filter.push(*makePicture(AV_PIX_FMT_YUV420P, 128, 32, {120, 128, 128}, 40), frames.sink());
    filter.push(*makePicture(AV_PIX_FMT_YUV444P10LE, 64, 64, {480, 512, 512}, 80), frames.sink());
    auto interlaced = makePicture(AV_PIX_FMT_YUV420P, 64, 64, {120, 128, 128}, 120);
    setInterlaced(*interlaced);
    filter.push(*interlaced, frames.sink());
    filter.finish(frames.sink());
    ASSERT_EQ(frames.count(), 4U);
    for (std::size_t i = 0; i < frames.count(); ++i) {
        expectEncodable(frames[i], {64, 64});
        EXPECT_EQ(frames[i].pts, static_cast<std::int64_t>(i) * 40);
        EXPECT_NEAR(valueAt(frames[i], 0, 32, 32), 120, 1);
    }
}

} // namespace

} // namespace boxlift::media
