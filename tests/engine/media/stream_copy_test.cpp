#include "engine/media/stream_copy.h"

#include <gtest/gtest.h>

#include <string>

#include "engine/media/av/compat.h"
#include "engine/media/stream_maker.h"

namespace boxlift::media {

namespace {

std::string valueOf(const AVStream& stream, const char* key) {
    const AVDictionaryEntry* entry = av_dict_get(stream.metadata, key, nullptr, 0);
    return entry ? entry->value : "none";
}

class StreamCopyTest : public testing::Test {
protected:
    StreamCopyTest() {
        av_dict_set(&m_from.metadata, "language", "fra", 0);
        av_dict_set(&m_from.metadata, "title", "Commentary", 0);
        av_dict_set(&m_from.metadata, "encoder", "someone", 0);
        av_dict_set(&m_from.metadata, "vendor_id", "FFMP", 0);
        m_from.disposition = AV_DISPOSITION_DEFAULT | AV_DISPOSITION_FORCED;
    }

    void turn() {
        auto* matrix = reinterpret_cast<std::int32_t*>(
            av::newStreamSideData(m_from, AV_PKT_DATA_DISPLAYMATRIX, 9 * sizeof(std::int32_t)));
        av::toDisplayMatrix(m_turned, std::span<std::int32_t, 9>(matrix, 9));
    }
    void expectTurned() const {
        const auto data = av::streamSideData(m_to, AV_PKT_DATA_DISPLAYMATRIX);
        ASSERT_EQ(data.size(), 9 * sizeof(std::int32_t));
        EXPECT_EQ(av::toTransform(reinterpret_cast<const std::int32_t*>(data.data()), {160, 120}),
                  m_turned);
    }

    const AffineTransform m_turned{0, 1, -1, 0, 120, 0};
    test::StreamMaker m_source;
    test::StreamMaker m_output;
    AVStream& m_from = m_source.add({AV_CODEC_ID_H264, "avc1", {1, 2, 3, 4, 5}});
    AVStream& m_to = m_output.add({});
};

} // namespace

TEST_F(StreamCopyTest, DescribesTheSameSamples) {
    m_from.codecpar->width = 160;
    m_from.codecpar->color_primaries = AVCOL_PRI_BT709;
    m_from.time_base = {1, 600};
    m_from.avg_frame_rate = {30000, 1001};
    m_from.r_frame_rate = {60, 1};
    copyStreamDescription(m_to, m_from);
    EXPECT_EQ(m_to.codecpar->codec_id, AV_CODEC_ID_H264);
    EXPECT_EQ(m_to.codecpar->width, 160);
    EXPECT_EQ(m_to.codecpar->color_primaries, AVCOL_PRI_BT709);
    ASSERT_EQ(m_to.codecpar->extradata_size, 5);
    EXPECT_EQ(m_to.codecpar->extradata[4], 5);
    EXPECT_NE(m_to.codecpar->extradata, m_from.codecpar->extradata);
    EXPECT_EQ(av_cmp_q(m_to.time_base, m_from.time_base), 0);
    EXPECT_EQ(av_cmp_q(m_to.avg_frame_rate, m_from.avg_frame_rate), 0);
    EXPECT_EQ(av_cmp_q(m_to.r_frame_rate, m_from.r_frame_rate), 0);
}

TEST_F(StreamCopyTest, LeavesTheTagToTheMuxer) {
    copyStreamDescription(m_to, m_from);
    EXPECT_EQ(m_to.codecpar->codec_tag, 0U);
}

TEST_F(StreamCopyTest, KeepsThePixelsAspectWhereverItWasTold) {
    m_from.sample_aspect_ratio = {4, 3};
    copyStreamDescription(m_to, m_from);
    EXPECT_EQ(av_cmp_q(m_to.sample_aspect_ratio, {4, 3}), 0);
    EXPECT_EQ(av_cmp_q(m_to.codecpar->sample_aspect_ratio, {4, 3}), 0);
    m_from.sample_aspect_ratio = {0, 1};
    m_from.codecpar->sample_aspect_ratio = {16, 11};
    copyStreamDescription(m_to, m_from);
    EXPECT_EQ(av_cmp_q(m_to.codecpar->sample_aspect_ratio, {16, 11}), 0);
}

TEST_F(StreamCopyTest, TakesTheContainersPixelAspectBeforeThatOfTheSamples) {
    m_from.sample_aspect_ratio = {4, 3};
    m_from.codecpar->sample_aspect_ratio = {16, 11};
    copyStreamDescription(m_to, m_from);
    EXPECT_EQ(av_cmp_q(m_to.codecpar->sample_aspect_ratio, {4, 3}), 0);
}

TEST_F(StreamCopyTest, KeepsLanguageTitleAndFlags) {
    copyStreamDescription(m_to, m_from);
    EXPECT_EQ(valueOf(m_to, "language"), "fra");
    EXPECT_EQ(valueOf(m_to, "title"), "Commentary");
    EXPECT_EQ(m_to.disposition, AV_DISPOSITION_DEFAULT | AV_DISPOSITION_FORCED);
}

TEST_F(StreamCopyTest, DropsTheNamesOfThoseWhoWroteTheSamples) {
    copyStreamLabels(m_to, m_from);
    EXPECT_EQ(valueOf(m_to, "language"), "fra");
    EXPECT_EQ(valueOf(m_to, "encoder"), "none");
    EXPECT_EQ(valueOf(m_to, "vendor_id"), "none");
}

TEST_F(StreamCopyTest, CopiesLabelsAlone) {
    copyStreamLabels(m_to, m_from);
    EXPECT_EQ(m_to.codecpar->codec_id, AV_CODEC_ID_NONE);
    EXPECT_EQ(m_to.disposition, m_from.disposition);
}

TEST_F(StreamCopyTest, KeepsHowThePictureIsTurned) {
    turn();
    copyStreamDescription(m_to, m_from);
    expectTurned();
}

} // namespace boxlift::media
