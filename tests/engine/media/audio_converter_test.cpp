#include "engine/media/audio_converter.h"

#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <vector>

#include "engine/media/audio_frames.h"
#include "engine/media/error.h"

namespace boxlift::media {

namespace {

using test::FrameShape;
using test::makeFrame;
using test::tone;

/// What a converter gives out, one row per channel.
class Output {
public:
    explicit Output(const AudioFormat& format) : m_converter(format, "test") {}

    Output& add(const AVFrame& frame, int skip = 0) {
        m_converter.convert(frame, skip, sink());
        return *this;
    }
    Output& flush() {
        m_converter.flush(sink());
        return *this;
    }
    std::size_t length() const { return m_channels[0].size(); }
    double at(std::size_t channel, std::size_t sample) const { return m_channels[channel][sample]; }
    double peak(std::size_t channel) const {
        double highest = 0;
        for (const double value : m_channels[channel])
            highest = std::max(highest, std::abs(value));
        return highest;
    }

private:
    AudioConverter::Sink sink() {
        return [this](const av::FramePtr& frame) {
            for (int channel = 0; channel < frame->ch_layout.nb_channels; ++channel)
                for (int i = 0; i < frame->nb_samples; ++i)
                    m_channels[static_cast<std::size_t>(channel)].push_back(
                        test::sampleOf(*frame, channel, i));
        };
    }

    AudioConverter m_converter;
    std::array<std::vector<double>, 6> m_channels;
};

constexpr AudioFormat stereo44100{44100, AV_CH_LAYOUT_STEREO, AV_SAMPLE_FMT_FLT};

TEST(AudioConverter, PassesSamplesOfTheSameFormatUnchanged) {
    const auto frame = makeFrame({}, 1000, tone(440, 0.5, 44100));
    Output output(stereo44100);
    output.add(*frame).flush();
    ASSERT_EQ(output.length(), 1000U);
    for (int i = 0; i < 1000; ++i)
        ASSERT_EQ(output.at(1, static_cast<std::size_t>(i)), test::sampleOf(*frame, 1, i));
}

TEST(AudioConverter, BringsMonoToBothSidesAtTheSameLevel) {
    const auto frame = makeFrame({"mono", 44100, AV_SAMPLE_FMT_S16}, 4410, tone(441, 0.5, 44100));
    Output output(stereo44100);
    output.add(*frame).flush();
    EXPECT_NEAR(output.peak(0), 0.5, 0.001);
    EXPECT_NEAR(output.peak(1), 0.5, 0.001);
}

TEST(AudioConverter, LeavesTheLowFrequenciesOutOfStereo) {
    for (const char* layout : {"5.1", "5.1(side)"}) {
        Output low(stereo44100);
        low.add(*makeFrame({layout}, 4410, tone(441, 1, 44100, 3))).flush();
        EXPECT_EQ(low.peak(0), 0) << layout;
        EXPECT_EQ(low.peak(1), 0) << layout;
        Output centre(stereo44100);
        centre.add(*makeFrame({layout}, 4410, tone(441, 1, 44100, 2))).flush();
        EXPECT_NEAR(centre.peak(0), 0.7071 / 2.4142, 0.001) << layout;
        EXPECT_NEAR(centre.peak(1), 0.7071 / 2.4142, 0.001) << layout;
        Output back(stereo44100);
        back.add(*makeFrame({layout}, 4410, tone(441, 1, 44100, 4))).flush();
        EXPECT_NEAR(back.peak(0), 0.7071 / 2.4142, 0.001) << layout;
        EXPECT_EQ(back.peak(1), 0) << layout;
    }
}

TEST(AudioConverter, CannotClipWhenAllChannelsAreLoud) {
    Output output(stereo44100);
    output.add(*makeFrame({"7.1"}, 4410, tone(441, 1, 44100))).flush();
    EXPECT_LE(output.peak(0), 1.0001);
    EXPECT_GT(output.peak(0), 0.7);
}

TEST(AudioConverter, KeepsTheLowFrequenciesOfSideSurround) {
    Output output({48000, AV_CH_LAYOUT_5POINT1_BACK, AV_SAMPLE_FMT_FLTP});
    output.add(*makeFrame({"5.1(side)", 48000}, 4800, tone(100, 0.5, 48000, 3))).flush();
    EXPECT_NEAR(output.peak(3), 0.5, 0.001);
    EXPECT_EQ(output.peak(0), 0);
}

TEST(AudioConverter, TakesTwentyFourChannelsWithoutAnOrder) {
    for (const char* layout : {"24 channels", "22.2"}) {
        Output output(stereo44100);
        output.add(*makeFrame({layout}, 4410, tone(441, 1, 44100))).flush();
        EXPECT_GT(output.peak(0), 0.4) << layout;
        EXPECT_GT(output.peak(1), 0.4) << layout;
    }
}

TEST(AudioConverter, ConvertsLowAndHighRatesToTheRightLength) {
    for (const int rate : {8000, 11025, 22050, 32000, 48000, 96000, 192000}) {
        Output output(stereo44100);
        for (int block = 0; block < 5; ++block)
            output.add(
                *makeFrame({"mono", rate}, rate / 5, tone(440, 0.5, rate), block * rate / 5));
        output.flush();
        EXPECT_NEAR(static_cast<double>(output.length()), 44100, 1) << rate;
        EXPECT_NEAR(output.peak(0), 0.5, 0.01) << rate;
    }
}

TEST(AudioConverter, DoesNotShiftWhatItResamples) {
    Output output(stereo44100);
    output.add(*makeFrame({"mono", 48000}, 48000, tone(100, 0.5, 48000))).flush();
    double worst = 0;
    for (std::size_t i = 100; i < 44000; ++i)
        worst = std::max(worst, std::abs(output.at(0, i) -
                                         tone(100, 0.5, 44100)(0, static_cast<std::int64_t>(i))));
    EXPECT_LT(worst, 0.001);
}

TEST(AudioConverter, KeepsSoundThatIsShorterThanItsFilter) {
    const auto half = [](int, std::int64_t) { return 0.5; };
    for (const int rate : {8000, 48000, 192000})
        for (const int count : {1, 2, 9, 40}) {
            Output output(stereo44100);
            output.add(*makeFrame({"mono", rate}, count, half)).flush();
            const double length = std::ceil(count * 44100.0 / rate);
            EXPECT_NEAR(static_cast<double>(output.length()), length, 1) << count << " at " << rate;
            // What is lower than the new rate can tell is lost of a click.
            EXPECT_GT(output.peak(0), 0.4 * std::min(1.0, count * 44100.0 / rate));
        }
}

TEST(AudioConverter, StartsAnewWhenTheSourceChangesItsFormat) {
    Output output(stereo44100);
    output.add(*makeFrame({"mono", 22050}, 22050, tone(440, 0.5, 22050)))
        .add(*makeFrame({"5.1", 48000, AV_SAMPLE_FMT_S16}, 48000, tone(440, 0.5, 48000)))
        .add(*makeFrame({"stereo", 44100, AV_SAMPLE_FMT_FLT}, 44100, tone(440, 0.5, 44100)))
        .flush();
    EXPECT_NEAR(static_cast<double>(output.length()), 3 * 44100, 3);
    EXPECT_LT(output.peak(0), 0.6);
}

TEST(AudioConverter, LeavesOutTheSamplesThatItIsToldTo) {
    for (const AVSampleFormat format : {AV_SAMPLE_FMT_FLTP, AV_SAMPLE_FMT_S16}) {
        const auto ramp = [](int, std::int64_t sample) {
            return static_cast<double>(sample) / 1000;
        };
        Output output(stereo44100);
        output.add(*makeFrame({"stereo", 44100, format}, 500, ramp), 123).flush();
        ASSERT_EQ(output.length(), 377U);
        EXPECT_NEAR(output.at(1, 0), 0.123, 0.0001);
    }
}

TEST(AudioConverter, RefusesMoreChannelsThanCanBeMixed) {
    Output output(stereo44100);
    const auto frame = makeFrame({"100 channels"}, 10, tone(440, 0.5, 44100));
    EXPECT_THROW(output.add(*frame), Error);
}

} // namespace

} // namespace boxlift::media
