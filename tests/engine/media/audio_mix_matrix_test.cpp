#include "engine/media/audio_mix_matrix.h"

#include <gtest/gtest.h>

namespace boxlift::media {

namespace {

constexpr double minusThree = 0.70710678;
/// What scales a row of 5.1 in stereo: one whole channel, centre and surround at -3 dB.
constexpr double surroundScale = 1 / (1 + 2 * minusThree);

ChannelLayout layout(const char* name) {
    ChannelLayout layout;
    EXPECT_EQ(av_channel_layout_from_string(layout.address(), name), 0) << name;
    return ChannelLayout::interpret(layout.get());
}

void expectMatrix(const std::vector<double>& matrix, const std::vector<double>& expected) {
    ASSERT_EQ(matrix.size(), expected.size());
    for (std::size_t i = 0; i < matrix.size(); ++i)
        EXPECT_NEAR(matrix[i], expected[i], 1e-6) << "gain " << i;
}

TEST(AudioMixMatrix, BringsMonoToBothSidesAtFullLevel) {
    expectMatrix(mixMatrix(layout("mono"), AV_CH_LAYOUT_STEREO), {1, 1});
}

TEST(AudioMixMatrix, MixesStereoToMonoWithoutClipping) {
    expectMatrix(mixMatrix(layout("stereo"), AV_CH_LAYOUT_MONO), {0.5, 0.5});
}

TEST(AudioMixMatrix, MixesSurroundToStereoWithoutTheLowFrequencies) {
    const double whole = surroundScale;
    const double three = minusThree * surroundScale;
    const std::vector<double> expected{whole, 0,     three, 0, three, 0, //
                                       0,     whole, three, 0, 0,     three};
    expectMatrix(mixMatrix(layout("5.1"), AV_CH_LAYOUT_STEREO), expected);
    expectMatrix(mixMatrix(layout("5.1(side)"), AV_CH_LAYOUT_STEREO), expected);
}

TEST(AudioMixMatrix, TakesSideSpeakersForBackOnesUnchanged) {
    std::vector<double> identity(36);
    for (std::size_t i = 0; i < 6; ++i)
        identity[i * 7] = 1;
    expectMatrix(mixMatrix(layout("5.1(side)"), AV_CH_LAYOUT_5POINT1_BACK), identity);
}

TEST(AudioMixMatrix, FoldsSideIntoBackWhenTheSourceHasBoth) {
    const auto matrix = mixMatrix(layout("7.1"), AV_CH_LAYOUT_5POINT1_BACK);
    ASSERT_EQ(matrix.size(), 48U);
    const std::size_t backLeftRow = std::size_t{4} * 8;
    const double scale = 1 / (1 + minusThree);
    EXPECT_NEAR(matrix[backLeftRow + 4], scale, 1e-6);
    EXPECT_NEAR(matrix[backLeftRow + 6], minusThree * scale, 1e-6);
}

TEST(AudioMixMatrix, SpreadsChannelsWithoutAnOrderEvenLeftOddRight) {
    const auto matrix = mixMatrix(layout("24 channels"), AV_CH_LAYOUT_STEREO);
    ASSERT_EQ(matrix.size(), 48U);
    for (std::size_t i = 0; i < 24; ++i) {
        EXPECT_NEAR(matrix[i], i % 2 == 0 ? 1.0 / 12 : 0, 1e-6);
        EXPECT_NEAR(matrix[24 + i], i % 2 == 1 ? 1.0 / 12 : 0, 1e-6);
    }
}

TEST(AudioMixMatrix, KeepsALoneLowFrequencyChannelPairAudible) {
    ChannelLayout low = ChannelLayout::ofMask(AV_CH_LOW_FREQUENCY | AV_CH_LOW_FREQUENCY_2);
    ASSERT_EQ(low.count(), 2);
    expectMatrix(mixMatrix(low, AV_CH_LAYOUT_STEREO), {1, 0, 0, 1});
}

TEST(AudioMixMatrix, NeverLetsARowAddUpToMoreThanOne) {
    constexpr std::uint64_t targets[]{AV_CH_LAYOUT_MONO, AV_CH_LAYOUT_STEREO, AV_CH_LAYOUT_SURROUND,
                                      AV_CH_LAYOUT_5POINT1_BACK};
    for (const char* name : {"2.1", "3.0(back)", "4.0", "quad", "5.0", "6.1", "7.1(wide)",
                             "octagonal", "hexadecagonal", "22.2", "downmix"}) {
        const ChannelLayout from = layout(name);
        for (const std::uint64_t to : targets) {
            const auto matrix = mixMatrix(from, to);
            const auto columns = static_cast<std::size_t>(from.count());
            for (std::size_t row = 0; row * columns < matrix.size(); ++row) {
                double sum = 0;
                for (std::size_t i = 0; i < columns; ++i)
                    sum += matrix[row * columns + i];
                EXPECT_LE(sum, 1 + 1e-9) << name << " row " << row;
            }
        }
    }
}

} // namespace

} // namespace boxlift::media
