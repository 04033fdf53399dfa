#include "engine/media/aac_file_writer.h"

#include <chrono>
#include <random>

#include "engine/media/aac_writer_fixture.h"
#include "engine/media/box_bytes.h"
#include "support/media_decode.h"
#include "support/media_measure.h"
#include "support/media_probe.h"
#include "support/temp_folder.h"

namespace boxlift::media {

namespace {

using namespace std::chrono_literals;
using Status = AssetWriter::Status;
using test::aac128;
using test::aac256;
using test::makeBuffer;
using test::sine;

/// What it makes of what it is given.
class AacFileWriterTest : public test::AacWriterTest {};

TEST_F(AacFileWriterTest, WritesOneAacTrack) {
    write(44100, sine, aac128);
    const auto file = test::probe(path());
    ASSERT_EQ(file.streams.size(), 1U);
    EXPECT_EQ(file.audio().codec, "aac");
    EXPECT_EQ(file.audio().profile, "LC");
    EXPECT_EQ(file.audio().sampleRate, 44100);
    EXPECT_EQ(file.audio().channels, 2);
    EXPECT_TRUE(file.audio().isDefault);
}

TEST_F(AacFileWriterTest, GivesBackExactlyAsManySamplesAsItWasGiven) {
    for (const std::size_t frames : {1U, 1023U, 1024U, 44100U, 44321U, 100'000U}) {
        write(frames, sine);
        EXPECT_EQ(readBack().size(), 2 * frames);
        EXPECT_EQ(test::decodeAudio(path()).length(), frames);
        EXPECT_EQ(test::openAsset(path())->duration(),
                  Time::fromRate(static_cast<std::int64_t>(frames), 44100));
        std::filesystem::remove(path());
    }
}

TEST_F(AacFileWriterTest, EncodesLongAudioOnSeveralThreadsJustTheSame) {
    constexpr std::size_t frames = 145 * 44100 + 321;
    const Time duration = Time::fromSeconds(145);
    const StretchPlan plan = planStretches(duration, 44100, 2);
    ASSERT_EQ(plan.workers, 2);
    ASSERT_LT(plan.first, frames);
    AacFileWriter writer(path(), 2);
    writer.setOverallDurationHint(duration);
    ASSERT_TRUE(start(writer));
    appendSine(writer, frames);
    writer.markAsFinished();
    EXPECT_LT(writer.encodedTime(), duration);
    EXPECT_TRUE(writer.waitUntilEncoded(60s));
    EXPECT_GE(writer.encodedTime(), duration);
    writer.finishWriting();
    ASSERT_EQ(writer.status(), Status::completed);
    EXPECT_EQ(readBack().size(), 2 * frames);
    EXPECT_EQ(test::openAsset(path())->duration(),
              Time::fromRate(static_cast<std::int64_t>(frames), 44100));
    const auto sound = test::decodeAudio(path());
    EXPECT_NEAR(test::toneLevel(sound, 440), 0.5, 0.005);
    const auto seam = static_cast<std::size_t>(plan.first);
    EXPECT_NEAR(test::toneLevel(sound, 440, {0, seam, seam + 4410}), 0.5, 0.005);
}

/// How many samples are in the first chunk of the first track (ISO/IEC 14496-12, 8.7.4).
std::uint64_t firstChunk(const std::filesystem::path& path) {
    const std::string file = test::readFile(path);
    // The table's name, a version, the number of rows, and of the first row its chunk.
    const std::size_t at = file.find("stsc", file.rfind("moov")) + 16;
    const std::string count = file.substr(at, 4);
    return box_bytes::numberIn(std::vector<std::uint8_t>(count.begin(), count.end()), 4);
}

// Which shows in the chunks: the container's writer fills them with whole runs.
TEST_F(AacFileWriterTest, HandsManyPacketsOverAsOneToSaveMemory) {
    write(80 * 44100, sine);
    EXPECT_GT(firstChunk(path()), 1024U);
    EXPECT_EQ(firstChunk(path()) % 256, 0U);
}

TEST_F(AacFileWriterTest, ShiftsNothing) {
    constexpr std::size_t at = 20'000;
    write(44100, [](std::size_t sample) { return sample == at ? 0.9 : 0.0; });
    const auto samples = readBack();
    const auto highest = std::max_element(samples.begin(), samples.end());
    EXPECT_EQ(static_cast<std::size_t>(highest - samples.begin()) / 2, at);
}

/// The shift, within 64 samples, at which what was read fits best to what was written.
int bestShift(const std::vector<std::int16_t>& samples, const std::vector<double>& written) {
    int best = 0;
    double highest = 0;
    for (int shift = -64; shift <= 64; ++shift) {
        double sum = 0;
        for (std::size_t i = 1000; i < 20'000; ++i)
            sum += samples[2 * (i + static_cast<std::size_t>(shift + 64) - 64)] * written[i];
        if (sum > highest) {
            highest = sum;
            best = shift;
        }
    }
    return best;
}

TEST_F(AacFileWriterTest, KeepsNoiseInItsPlace) {
    std::mt19937 engine(1);
    std::normal_distribution<double> normal(0, 0.1);
    std::vector<double> noise(22050);
    for (double& value : noise)
        value = std::clamp(normal(engine), -0.9, 0.9);
    write(noise.size(), [&](std::size_t sample) { return noise[sample]; });
    const auto samples = readBack();
    ASSERT_EQ(samples.size(), 2 * noise.size());
    EXPECT_EQ(bestShift(samples, noise), 0);
}

TEST_F(AacFileWriterTest, KeepsTheLevelOfATone) {
    write(44100, sine, aac128);
    EXPECT_NEAR(test::toneLevel(test::decodeAudio(path()), 440), 0.5, 0.005);
}

TEST_F(AacFileWriterTest, TakesOverTitlesAndCover) {
    test::MediaSpec spec{.format = "ipod", .audio = {{}}, .cover = test::CoverSpec{}};
    spec.metadata = {{"title", "A title"}, {"artist", "Somebody"}};
    BOXLIFT_MAKE_MEDIA(folder() / "in.m4a", spec);
    {
        AacFileWriter writer(path());
        writer.copyMetadata(*test::openAsset(folder() / "in.m4a"));
        ASSERT_TRUE(start(writer));
        append(writer, 44100, sine);
        writer.finishWriting();
        ASSERT_EQ(writer.status(), Status::completed);
    }
    const auto file = test::probe(path());
    EXPECT_EQ(file.metadata.at("title"), "A title");
    EXPECT_EQ(file.metadata.at("artist"), "Somebody");
    ASSERT_EQ(file.streams.size(), 2U);
    EXPECT_TRUE(file.streams[1].isAttachedPicture);
}

TEST_F(AacFileWriterTest, TakesOnlyWhatTheEncoderCanDo) {
    const AacFileWriter writer(path());
    for (const AacSettings& settings : {aac128,
                                        aac256,
                                        AacSettings{48000, 1, 96'000},
                                        {8000, 1, 24'000},
                                        {44100, 2, 64'000},
                                        {44100, 2, 320'000}})
        EXPECT_TRUE(writer.canAddAudioInput(settings)) << settings.bitRate;
    for (const AacSettings& settings : {AacSettings{44100, 2, 0},
                                        {44100, 2, 32'000},
                                        {44100, 2, 512'000},
                                        {44100, 6, 448'000},
                                        {44100, 0, 128'000},
                                        {37800, 2, 128'000},
                                        {8000, 1, 128'000}})
        EXPECT_FALSE(writer.canAddAudioInput(settings)) << settings.bitRate;
}

TEST_F(AacFileWriterTest, DoesNotStartWithoutAnInput) {
    AacFileWriter writer(path());
    EXPECT_FALSE(writer.startWriting());
    EXPECT_EQ(writer.status(), Status::unknown);
}

TEST_F(AacFileWriterTest, IsNotReadyWhileItsInputIsFull) {
    AacFileWriter writer(path());
    ASSERT_TRUE(start(writer));
    EXPECT_TRUE(writer.isReadyForMoreMediaData());
    // A second of audio takes the encoder much longer than handing it over.
    bool wasFull = false;
    const SampleBuffer buffer = makeBuffer(0, 44100, sine);
    for (int i = 0; i < 100 && !wasFull; ++i) {
        ASSERT_TRUE(writer.append(buffer));
        wasFull = !writer.isReadyForMoreMediaData();
    }
    EXPECT_TRUE(wasFull);
    EXPECT_TRUE(writer.waitUntilReadyForMoreMediaData(20s));
    writer.cancelWriting();
}

} // namespace

} // namespace boxlift::media
