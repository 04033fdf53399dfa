#include "engine/media/stretched_encoder.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>
#include <thread>

#include "engine/media/audio_decoder.h"
#include "engine/media/error.h"

namespace boxlift::media {

namespace {

using namespace std::chrono_literals;

constexpr AudioEncoder::Settings stereo128{44100, AV_CH_LAYOUT_STEREO, 128'000};
constexpr std::int64_t frame = AudioStretch::frameLength;
constexpr std::int64_t endless = std::numeric_limits<std::int64_t>::max() / 4 / frame * frame;
constexpr StretchPlan serial{endless, endless, 1, 65536};
/// Seams after every 450 frames, ten seconds and a half, but that the first stretch is longer.
constexpr std::int64_t length = 450 * frame;
constexpr StretchPlan two{length + 60 * frame, length, 2, 2 * length + 65536};

/// The value of a channel at a sample, -1 to 1.
using Signal = std::function<double(int channel, std::int64_t sample)>;

constexpr double turn = 2 * std::numbers::pi;

/// The same numbers for the same sample, from -1 to 1.
double noise(std::int64_t sample) {
    auto bits = static_cast<std::uint64_t>(sample) * 0x9e3779b97f4a7c15U;
    bits ^= bits >> 29;
    bits *= 0xbf58476d1ce4e5b9U;
    return static_cast<double>(bits >> 40) / (1 << 23) - 1;
}

/// Chords that are struck twice a second and die away, different ones left and right.
double music(int channel, std::int64_t sample) {
    constexpr std::array<double, 4> roots{220, 261.63, 196, 329.63};
    const double time = static_cast<double>(sample) / 44100;
    const double since = std::fmod(time, 0.5);
    const double root = roots.at(static_cast<std::size_t>(time * 2) % 4) * (channel == 0 ? 1 : 1.5);
    double sum = 0;
    for (int partial = 1; partial <= 8; ++partial)
        sum += std::sin(turn * root * partial * time) / partial;
    return 0.2 * std::exp(-3 * since) * sum + 0.01 * noise(sample);
}

/// Syllables of a buzzing voice, four a second, each ending in a hiss; pauses between sentences.
double speech(int, std::int64_t sample) {
    const double time = static_cast<double>(sample) / 44100;
    if (std::fmod(time, 3) > 2.4)
        return 0;
    const double since = std::fmod(time, 0.25) / 0.25;
    const double pitch = 110 + 30 * std::sin(turn * 0.7 * time);
    double voice = 0;
    for (int partial = 1; partial <= 25; ++partial)
        voice += std::sin(turn * pitch * partial * time) / (1 + std::abs(partial - 6));
    return since < 0.7 ? 0.1 * std::sin(std::numbers::pi * since / 0.7) * voice
                       : 0.05 * noise(sample);
}

/// A click every 40 frames or so, some of them right at a seam.
double transients(int, std::int64_t sample) {
    constexpr std::int64_t period = 45 * frame;
    const double since = static_cast<double>(sample % period) / 44100;
    return 0.6 * std::exp(-200 * since) * noise(sample);
}

double silence(int, std::int64_t) {
    return 0;
}

SampleBuffer makeBuffer(const Signal& signal, std::int64_t position, std::int64_t count) {
    SampleBuffer buffer;
    for (std::int64_t i = position; i < position + count; ++i)
        for (int channel = 0; channel < 2; ++channel)
            buffer.samples.push_back(
                static_cast<std::int16_t>(std::lrint(32767 * signal(channel, i))));
    return buffer;
}

void pushAll(StretchedEncoder& encoder, const Signal& signal, std::int64_t count) {
    // Of no size that fits frames or stretches.
    constexpr std::int64_t block = 7001;
    for (std::int64_t i = 0; i < count; i += block)
        if (!encoder.push(makeBuffer(signal, i, std::min(block, count - i)), i))
            return;
    encoder.close();
}

std::vector<av::PacketPtr> encode(const StretchPlan& plan, const Signal& signal,
                                  std::int64_t count) {
    StretchedEncoder encoder(stereo128, plan, "test");
    encoder.start();
    const std::jthread feeder([&] { pushAll(encoder, signal, count); });
    std::vector<av::PacketPtr> packets;
    while (av::PacketPtr packet = encoder.next())
        packets.push_back(std::move(packet));
    return packets;
}

/// The first channel, from the timeline's zero.
std::vector<double> decode(const std::vector<av::PacketPtr>& packets) {
    const av::OutputContextPtr context(avformat_alloc_context());
    AVStream& stream = *avformat_new_stream(context.get(), nullptr);
    AudioEncoder(stereo128, "test").describe(stream);
    AudioDecoder decoder(stream, "test");
    std::vector<double> samples;
    const auto take = [&](const AVFrame& decoded, Time) {
        const auto* plane = reinterpret_cast<const float*>(decoded.extended_data[0]);
        samples.insert(samples.end(), plane, plane + decoded.nb_samples);
    };
    for (const av::PacketPtr& packet : packets)
        decoder.push(*packet, take);
    decoder.finish(take);
    return samples;
}

class StretchedEncoderTest : public testing::Test {
protected:
    static constexpr std::int64_t count = 4 * length - 12'345;

    void encodeBoth(const Signal& signal) {
        m_signal = signal;
        m_serialPackets = encode(serial, signal, count);
        m_joinedPackets = encode(two, signal, count);
        m_serial = decode(m_serialPackets);
        m_joined = decode(m_joinedPackets);
    }

    /// Energy of the difference from the signal, per sample.
    double noiseOf(const std::vector<double>& samples, std::int64_t begin, std::int64_t end) const {
        double sum = 0;
        for (std::int64_t i = begin; i < end; ++i) {
            const double value = static_cast<double>(std::lrint(32767 * m_signal(0, i))) / 32768;
            const double difference = samples.at(static_cast<std::size_t>(i)) - value;
            sum += difference * difference;
        }
        return sum / static_cast<double>(end - begin);
    }

    void expectTheSamePlaces() const {
        ASSERT_EQ(m_joinedPackets.size(), m_serialPackets.size());
        for (std::size_t i = 0; i < m_joinedPackets.size(); ++i) {
            ASSERT_EQ(m_joinedPackets[i]->pts, m_serialPackets[i]->pts);
            ASSERT_EQ(m_joinedPackets[i]->duration, m_serialPackets[i]->duration);
        }
        ASSERT_EQ(m_joined.size(), m_serial.size());
    }

    /// `ratio` of the noise energies, in decibels.
    static double decibels(double ratio) { return 10 * std::log10(ratio); }

    /// The noise of both must be about the same everywhere, and no frame near a seam stand out.
    void expectNoSeam() const {
        constexpr double floor = 1e-10;
        const auto whole = count - frame;
        EXPECT_NEAR(
            decibels((noiseOf(m_joined, 0, whole) + floor) / (noiseOf(m_serial, 0, whole) + floor)),
            0, 0.3);
        for (std::int64_t seam = two.first; seam < count; seam += length) {
            const double usual = highestNoise(m_serial, seam - 40 * frame, seam + 80 * frame);
            const double found = highestNoise(m_joined, seam - 4 * frame, seam + 40 * frame);
            EXPECT_LT(decibels((found + floor) / (usual + floor)), 3) << "seam at " << seam;
        }
    }

private:
    /// Of the frame that has most.
    double highestNoise(const std::vector<double>& samples, std::int64_t begin,
                        std::int64_t end) const {
        double highest = 0;
        for (std::int64_t i = begin; i < std::min(end, count - 2 * frame); i += frame / 2)
            highest = std::max(highest, noiseOf(samples, i, i + frame));
        return highest;
    }

    Signal m_signal;
    std::vector<av::PacketPtr> m_serialPackets;
    std::vector<av::PacketPtr> m_joinedPackets;
    std::vector<double> m_serial;
    std::vector<double> m_joined;
};

TEST_F(StretchedEncoderTest, JoinsMusicWithoutASeam) {
    encodeBoth(music);
    expectTheSamePlaces();
    expectNoSeam();
}

TEST_F(StretchedEncoderTest, JoinsSpeechWithoutASeam) {
    encodeBoth(speech);
    expectTheSamePlaces();
    expectNoSeam();
}

TEST_F(StretchedEncoderTest, JoinsTransientsWithoutASeam) {
    encodeBoth(transients);
    expectTheSamePlaces();
    expectNoSeam();
}

TEST_F(StretchedEncoderTest, JoinsSilence) {
    encodeBoth(silence);
    expectTheSamePlaces();
    expectNoSeam();
}

TEST_F(StretchedEncoderTest, EndsWellWhereverTheLastStretchEnds) {
    constexpr StretchPlan small{40 * frame, 40 * frame, 2, 2 * 40 * frame + 65536};
    for (const std::int64_t samples :
         {std::int64_t{1}, 40 * frame - 1, 40 * frame, 40 * frame + 1, 41 * frame, 50 * frame + 7,
          72 * frame, 80 * frame + 3 * frame}) {
        std::int64_t sum = 0;
        std::int64_t expected = -frame;
        for (const av::PacketPtr& packet : encode(small, music, samples)) {
            ASSERT_EQ(packet->pts, expected) << samples;
            expected += packet->duration;
            sum += packet->duration;
        }
        EXPECT_EQ(sum, samples + frame);
    }
}

TEST_F(StretchedEncoderTest, TakesNoMoreThanItMayHoldUntilPacketsAreTaken) {
    StretchedEncoder encoder(stereo128, two, "test");
    encoder.start();
    std::int64_t pushed = 0;
    for (; encoder.isPushImmediate(); pushed += 44100)
        encoder.push(makeBuffer(silence, pushed, 44100), pushed);
    EXPECT_GE(pushed, two.readAhead);
    EXPECT_LT(pushed, two.readAhead + 44100);
    EXPECT_FALSE(encoder.waitForRoom(300ms));
    for (int i = 0; i < 100; ++i)
        EXPECT_NE(encoder.next(), nullptr);
    EXPECT_TRUE(encoder.waitForRoom(0ms));
}

TEST_F(StretchedEncoderTest, TellsWhenAllIsTaken) {
    StretchedEncoder encoder(stereo128, serial, "test");
    encoder.start();
    encoder.push(makeBuffer(music, 0, 44100), 0);
    encoder.close();
    EXPECT_FALSE(encoder.waitUntilTaken(10ms));
    while (encoder.next()) {
    }
    EXPECT_TRUE(encoder.waitUntilTaken(0ms));
    EXPECT_EQ(encoder.encodedCount(), 44100 + frame);
}

TEST_F(StretchedEncoderTest, EndsSoonWhenItIsAborted) {
    StretchedEncoder encoder(stereo128, two, "test");
    encoder.start();
    const std::jthread feeder([&] { pushAll(encoder, music, 100 * length); });
    std::this_thread::sleep_for(300ms);
    const auto begin = std::chrono::steady_clock::now();
    encoder.abort();
    while (encoder.next()) {
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 300ms);
    EXPECT_FALSE(encoder.push(makeBuffer(music, 0, 10), 0));
}

TEST_F(StretchedEncoderTest, ThrowsWhatAWorkerThrew) {
    StretchedEncoder encoder({37800, AV_CH_LAYOUT_STEREO, 128'000}, two, "test");
    encoder.start();
    encoder.push(makeBuffer(music, 0, 44100), 0);
    EXPECT_THROW(encoder.next(), Error);
}

} // namespace

} // namespace boxlift::media
