#include "engine/media/stretched_encoder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <numbers>
#include <optional>
#include <vector>

#include "engine/media/aac_window.h"
#include "engine/media/joined_encoding.h"

namespace boxlift::media {

namespace {

using test::frame;
using test::StereoSound;
using Packets = std::vector<av::PacketPtr>;

/// Each seam is so late that the encoder behind it has not begun with the sound. Behind the packet
/// at a seam comes one of another encoder; in the frame that starts with it the two overlap.
constexpr StretchPlan plan{720 * frame, 400 * frame, 2, 2 * 720 * frame};
static_assert(plan.first > AudioStretch::lead);

/// Clicks over quiet music, one of them where the encodings overlap at each seam.
double transients(int channel, std::int64_t sample) {
    constexpr std::int64_t period = 40 * frame;
    static_assert(plan.first % period == 0 && plan.length % period == 0);
    const double since = static_cast<double>((sample + period - frame) % period) / 44100;
    return 0.6 * std::exp(-200 * since) * test::noise(sample) + 0.2 * test::music(channel, sample);
}

/// A tone in a little noise; over it, on the left, a click in each frame up to `end`. So the left
/// needs short windows, the right long ones, and no frame has windows that both share.
double oneSided(int channel, std::int64_t sample, std::int64_t end) {
    const double tone = std::sin(2 * std::numbers::pi * static_cast<double>(sample % 100) / 100);
    const double steady = 0.3 * tone + 0.01 * test::noise(sample);
    if (channel == 1 || sample >= end)
        return steady;
    const double since = static_cast<double>(sample % frame) / 44100;
    return steady + 0.6 * std::exp(-800 * since) * test::noise(sample);
}

/// The index of the packet whose time stamp is a seam's; the first one is of priming.
std::size_t packetAt(std::int64_t seam) {
    return static_cast<std::size_t>(seam / frame + 1);
}

std::optional<AacWindow> windowOf(const av::PacketPtr& packet) {
    return readAacWindow({packet->data, static_cast<std::size_t>(packet->size)});
}

bool isSame(const av::PacketPtr& one, const av::PacketPtr& other) {
    return std::equal(one->data, one->data + one->size, other->data, other->data + other->size);
}

/// Beside the serial encoding.
class StretchedEncoderSeamTest : public testing::Test {
protected:
    static constexpr std::int64_t count = plan.first + 3 * plan.length - 12'345;
    /// The last frame is not all of sound.
    static constexpr std::int64_t whole = count - frame;
    static constexpr std::array seams{plan.first, plan.first + plan.length,
                                      plan.first + 2 * plan.length};

    void encodeBoth(const StereoSound& sound, std::int64_t length = count) {
        m_sound = test::makeBuffer(sound, 0, length).samples;
        const StereoSound same = [this](int channel, std::int64_t sample) {
            return m_sound[static_cast<std::size_t>(2 * sample + channel)] / 32767.0;
        };
        m_serialPackets = test::encode(test::serialPlan, same, length);
        m_joinedPackets = test::encode(plan, same, length);
        m_serial = test::decode(m_serialPackets);
        m_joined = test::decode(m_joinedPackets);
    }

    const av::PacketPtr& serialPacketAt(std::int64_t seam) const {
        return m_serialPackets.at(packetAt(seam));
    }

    void expectTheSamePlaces() const {
        ASSERT_EQ(m_joinedPackets.size(), m_serialPackets.size());
        for (std::size_t i = 0; i < m_joinedPackets.size(); ++i) {
            ASSERT_EQ(m_joinedPackets[i]->pts, m_serialPackets[i]->pts);
            ASSERT_EQ(m_joinedPackets[i]->duration, m_serialPackets[i]->duration);
        }
        ASSERT_EQ(m_joined.size(), m_serial.size());
    }

    /// Were the two not in the same place, what is taken for noise would be the sound itself.
    void expectLittleNoise() const {
        EXPECT_LT(decibels(noiseOf(m_serial, 0, whole), soundIn(0, whole)), -6);
    }

    /// The noise of both must be about the same everywhere, and no frame near a seam stand out.
    void expectNoSeam() const {
        EXPECT_NEAR(decibels(noiseOf(m_joined, 0, whole), noiseOf(m_serial, 0, whole)), 0, 0.3);
        for (const std::int64_t seam : seams) {
            const double usual = highestNoise(m_serial, seam - 40 * frame, seam + 80 * frame);
            const double found = highestNoise(m_joined, seam - 4 * frame, seam + 40 * frame);
            EXPECT_LT(decibels(found, usual), 3) << "seam at " << seam;
            EXPECT_LT(mostAdded(seam - 4 * frame, seam + 40 * frame), 10) << "seam at " << seam;
        }
    }

    /// How many packets from a seam's on are the serial encoder's, which goes by the first stretch.
    std::size_t packetsUntilTheOther() const {
        std::size_t i = packetAt(plan.first);
        while (i < m_serialPackets.size() && isSame(m_serialPackets[i], m_joinedPackets.at(i)))
            ++i;
        return i - packetAt(plan.first);
    }

    const Packets& serialPackets() const { return m_serialPackets; }

private:
    static constexpr double floor = 1e-10;

    /// Of energies.
    static double decibels(double one, double other) {
        return 10 * std::log10((one + floor) / (other + floor));
    }

    double soundAt(std::int64_t sample) const {
        return m_sound.at(static_cast<std::size_t>(2 * sample)) / 32768.0;
    }

    /// Energy per sample.
    double soundIn(std::int64_t begin, std::int64_t end) const {
        double sum = 0;
        for (std::int64_t i = begin; i < end; ++i)
            sum += soundAt(i) * soundAt(i);
        return sum / static_cast<double>(end - begin);
    }

    /// Energy of the difference from the sound, per sample.
    double noiseOf(const std::vector<double>& samples, std::int64_t begin, std::int64_t end) const {
        double sum = 0;
        for (std::int64_t i = begin; i < end; ++i) {
            const double difference = samples.at(static_cast<std::size_t>(i)) - soundAt(i);
            sum += difference * difference;
        }
        return sum / static_cast<double>(end - begin);
    }

    /// Of the frame that has most.
    double highestNoise(const std::vector<double>& samples, std::int64_t begin,
                        std::int64_t end) const {
        double highest = 0;
        for (std::int64_t i = begin; i < std::min(end, count - 2 * frame); i += frame / 2)
            highest = std::max(highest, noiseOf(samples, i, i + frame));
        return highest;
    }

    /// By how much a frame is noisier than the same one of the serial encoding, in decibels. Two
    /// encodings differ by some of them in single frames; what does not cancel at a seam is as
    /// loud as the sound.
    double mostAdded(std::int64_t begin, std::int64_t end) const {
        double most = 0;
        for (std::int64_t i = begin; i < end; i += frame / 2)
            most = std::max(
                most, decibels(noiseOf(m_joined, i, i + frame), noiseOf(m_serial, i, i + frame)));
        return most;
    }

    std::vector<std::int16_t> m_sound;
    Packets m_serialPackets;
    Packets m_joinedPackets;
    std::vector<double> m_serial;
    std::vector<double> m_joined;
};

TEST_F(StretchedEncoderSeamTest, JoinsMusicWithoutASeam) {
    encodeBoth(test::music);
    expectLittleNoise();
    expectTheSamePlaces();
    expectNoSeam();
}

TEST_F(StretchedEncoderSeamTest, JoinsSpeechWithoutASeam) {
    for (const std::int64_t seam : seams)
        ASSERT_TRUE(test::isVoiced(seam + frame) && test::isVoiced(seam + 2 * frame));
    encodeBoth(test::speech);
    expectLittleNoise();
    expectTheSamePlaces();
    expectNoSeam();
}

TEST_F(StretchedEncoderSeamTest, JoinsTransientsWithoutASeam) {
    encodeBoth(transients);
    expectLittleNoise();
    constexpr int eightShort = 2;
    for (const std::int64_t seam : seams) {
        const auto window = windowOf(serialPacketAt(seam));
        ASSERT_TRUE(window && window->sequence == eightShort) << "no transient at " << seam;
    }
    expectTheSamePlaces();
    expectNoSeam();
}

TEST_F(StretchedEncoderSeamTest, JoinsSilence) {
    encodeBoth(test::silence);
    expectTheSamePlaces();
    expectNoSeam();
}

TEST_F(StretchedEncoderSeamTest, GoesOverBehindTheFirstPacketWhoseWindowsAgree) {
    encodeBoth(test::music, plan.first + 50 * frame);
    expectTheSamePlaces();
    EXPECT_EQ(packetsUntilTheOther(), 1U);
}

TEST_F(StretchedEncoderSeamTest, LooksForTheSeamUntilBothChannelsShareTheirWindow) {
    encodeBoth(
        [](int channel, std::int64_t sample) {
            return oneSided(channel, sample, plan.first + 8 * frame);
        },
        plan.first + 50 * frame);
    std::size_t apart = 0;
    while (!windowOf(serialPackets().at(packetAt(plan.first) + apart)))
        ++apart;
    ASSERT_GT(apart, 4U);
    ASSERT_LT(apart, 16U);
    expectTheSamePlaces();
    EXPECT_EQ(packetsUntilTheOther(), apart + 1);
}

TEST_F(StretchedEncoderSeamTest, JoinsAtTheOverlapsEndWhereNoWindowIsShared) {
    encodeBoth([](int channel, std::int64_t sample) { return oneSided(channel, sample, count); });
    for (const std::int64_t seam : seams)
        for (std::size_t i = 0; i < AudioStretch::overlap / frame; ++i)
            ASSERT_FALSE(windowOf(serialPackets().at(packetAt(seam) + i))) << seam << ", " << i;
    expectTheSamePlaces();
    EXPECT_EQ(packetsUntilTheOther(), std::size_t{AudioStretch::overlap / frame});
    expectNoSeam();
}

} // namespace

} // namespace boxlift::media
