#include "engine/media/aac_file_writer.h"

#include <chrono>
#include <cmath>
#include <csignal>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <numbers>
#include <random>
#include <sys/resource.h>
#include <unistd.h>

#include "engine/media/audio_files.h"
#include "engine/media/audio_mix_reader.h"
#include "support/media_decode.h"
#include "support/media_measure.h"
#include "support/media_probe.h"
#include "support/temp_folder.h"

namespace boxlift::media {

namespace {

using namespace std::chrono_literals;
using Signal = std::function<double(std::size_t)>;
using Status = AssetWriter::Status;

constexpr AacSettings aac128{44100, 2, 128'000};
constexpr AacSettings aac256{44100, 2, 256'000};

double sine(std::size_t sample) {
    return 0.5 * std::sin(2 * std::numbers::pi * 440 * static_cast<double>(sample) / 44100);
}

SampleBuffer makeBuffer(std::size_t position, std::size_t frames, const Signal& signal) {
    SampleBuffer buffer;
    buffer.presentationTimeStamp = Time::fromRate(static_cast<std::int64_t>(position), 44100);
    for (std::size_t i = 0; i < frames; ++i)
        for (int channel = 0; channel < 2; ++channel)
            buffer.samples.push_back(
                static_cast<std::int16_t>(std::lround(signal(position + i) * 32767)));
    return buffer;
}

/// Lowers the size that files may have, so that writing fails as on a full disk.
class SmallFiles {
public:
    explicit SmallFiles(rlim_t bytes) {
        m_handler = std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit small{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
    }
    ~SmallFiles() {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }
    SmallFiles(const SmallFiles&) = delete;
    SmallFiles& operator=(const SmallFiles&) = delete;

private:
    rlimit m_before{};
    void (*m_handler)(int) = nullptr;
};

class AacFileWriterTest : public testing::Test {
protected:
    const std::filesystem::path& folder() const { return m_folder.path(); }
    std::filesystem::path path() const { return folder() / "out.m4a"; }
    bool isFolderEmpty() const { return std::filesystem::is_empty(folder()); }

    static bool start(AacFileWriter& writer, const AacSettings& settings = aac128) {
        EXPECT_TRUE(writer.canAddAudioInput(settings));
        writer.addAudioInput(settings);
        if (!writer.startWriting())
            return false;
        writer.startSession(Time::zero());
        return true;
    }

    static void append(AacFileWriter& writer, std::size_t frames, const Signal& signal) {
        constexpr std::size_t block = 8192;
        for (std::size_t position = 0; position < frames; position += block)
            writer.append(makeBuffer(position, std::min(block, frames - position), signal));
    }

    void write(std::size_t frames, const Signal& signal, const AacSettings& settings = aac256) {
        AacFileWriter writer(path());
        ASSERT_TRUE(start(writer, settings));
        append(writer, frames, signal);
        writer.markAsFinished();
        writer.finishWriting();
        ASSERT_EQ(writer.status(), Status::completed);
        EXPECT_EQ(writer.error(), nullptr);
    }

    /// What a player hears of the output.
    std::vector<std::int16_t> readBack() const {
        const auto asset = test::openAsset(path());
        const auto tracks = asset->loadTracks(MediaType::audio);
        AudioMixReader reader(asset);
        EXPECT_TRUE(reader.canAddAudioMix(tracks, {}));
        reader.addAudioMix(tracks, {});
        EXPECT_TRUE(reader.startReading());
        return test::readAll(reader);
    }

private:
    test::TempFolder m_folder;
};

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
    constexpr std::size_t frames = 70 * 44100 + 321;
    AacFileWriter writer(path(), 2);
    writer.setOverallDurationHint(Time::fromSeconds(70));
    ASSERT_TRUE(start(writer));
    append(writer, frames, sine);
    writer.markAsFinished();
    EXPECT_LT(writer.encodedTime(), Time::fromSeconds(70));
    EXPECT_TRUE(writer.waitUntilEncoded(60s));
    EXPECT_GE(writer.encodedTime(), Time::fromSeconds(70));
    writer.finishWriting();
    ASSERT_EQ(writer.status(), Status::completed);
    EXPECT_EQ(readBack().size(), 2 * frames);
    EXPECT_EQ(test::openAsset(path())->duration(),
              Time::fromRate(static_cast<std::int64_t>(frames), 44100));
    EXPECT_NEAR(test::toneLevel(test::decodeAudio(path()), 440), 0.5, 0.005);
}

TEST_F(AacFileWriterTest, IsCancelledSoonWhileSeveralThreadsEncode) {
    AacFileWriter writer(path(), 2);
    writer.setOverallDurationHint(Time::fromSeconds(600));
    ASSERT_TRUE(start(writer));
    append(writer, 60 * 44100, sine);
    const auto begin = std::chrono::steady_clock::now();
    writer.cancelWriting();
    writer.finishWriting();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 500ms);
    EXPECT_EQ(writer.status(), Status::cancelled);
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

TEST_F(AacFileWriterTest, FailsWhenNoSamplesCame) {
    {
        AacFileWriter writer(path());
        ASSERT_TRUE(start(writer));
        writer.finishWriting();
        EXPECT_EQ(writer.status(), Status::failed);
        EXPECT_EQ(test::errorKind(writer.error()), ErrorKind::cannotEncode);
    }
    EXPECT_TRUE(isFolderEmpty());
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

TEST_F(AacFileWriterTest, CannotStartInAFolderThatIsNotThere) {
    AacFileWriter writer(folder() / "missing" / "out.m4a");
    EXPECT_FALSE(start(writer));
    EXPECT_EQ(writer.status(), Status::failed);
    EXPECT_EQ(test::errorKind(writer.error()), ErrorKind::notPermitted);
}

TEST_F(AacFileWriterTest, CannotStartInAReadOnlyFolder) {
    if (::geteuid() == 0)
        GTEST_SKIP() << "the superuser may write everywhere";
    std::filesystem::permissions(folder(), std::filesystem::perms::owner_read |
                                               std::filesystem::perms::owner_exec);
    AacFileWriter writer(path());
    EXPECT_FALSE(start(writer));
    EXPECT_EQ(test::errorKind(writer.error()), ErrorKind::notPermitted);
    std::filesystem::permissions(folder(), std::filesystem::perms::owner_all);
    EXPECT_TRUE(isFolderEmpty());
}

TEST_F(AacFileWriterTest, ReportsAFullDiskWhenItFinishes) {
    const SmallFiles limit(20'000);
    {
        AacFileWriter writer(path());
        ASSERT_TRUE(start(writer));
        append(writer, 5 * 44100, sine);
        writer.finishWriting();
        EXPECT_EQ(writer.status(), Status::failed);
        EXPECT_EQ(test::errorKind(writer.error()), ErrorKind::noSpace);
    }
    EXPECT_TRUE(isFolderEmpty());
}

TEST_F(AacFileWriterTest, DropsBuffersAfterTheDiskHasFilledUp) {
    const SmallFiles limit(20'000);
    {
        AacFileWriter writer(path());
        ASSERT_TRUE(start(writer, {44100, 2, 320'000}));
        std::minstd_rand engine(1);
        SampleBuffer noise = makeBuffer(0, 8192, [&](std::size_t) {
            return std::uniform_real_distribution<double>(-0.5, 0.5)(engine);
        });
        // The first write reaches the disk after a mebibyte, half a minute of sound.
        for (int i = 0; i < 600 && writer.status() == Status::writing; ++i)
            writer.append(noise);
        EXPECT_EQ(writer.status(), Status::failed);
        EXPECT_EQ(test::errorKind(writer.error()), ErrorKind::noSpace);
        EXPECT_TRUE(writer.isReadyForMoreMediaData());
        EXPECT_FALSE(writer.append(noise));
        writer.finishWriting();
        EXPECT_EQ(writer.status(), Status::failed);
    }
    EXPECT_TRUE(isFolderEmpty());
}

TEST_F(AacFileWriterTest, LeavesAFileAloneThatHasTakenTheNameMeanwhile) {
    {
        AacFileWriter writer(path());
        ASSERT_TRUE(start(writer));
        append(writer, 44100, sine);
        test::writeFile(path(), "somebody else's");
        writer.finishWriting();
        EXPECT_EQ(writer.status(), Status::failed);
        EXPECT_EQ(test::errorKind(writer.error()), ErrorKind::nameTaken);
    }
    EXPECT_EQ(test::readFile(path()), "somebody else's");
    std::filesystem::remove(path());
    EXPECT_TRUE(isFolderEmpty());
}

TEST_F(AacFileWriterTest, ShowsNothingUnderTheNameBeforeItIsFinished) {
    AacFileWriter writer(path());
    ASSERT_TRUE(start(writer));
    append(writer, 44100, sine);
    EXPECT_FALSE(std::filesystem::exists(path()));
    writer.finishWriting();
    EXPECT_TRUE(std::filesystem::exists(path()));
}

TEST_F(AacFileWriterTest, LeavesNothingWhenItIsCancelled) {
    {
        AacFileWriter writer(path());
        ASSERT_TRUE(start(writer));
        append(writer, 44100, sine);
        writer.cancelWriting();
        EXPECT_EQ(writer.status(), Status::cancelled);
        EXPECT_EQ(writer.error(), nullptr);
        EXPECT_FALSE(writer.append(makeBuffer(0, 100, sine)));
        writer.finishWriting();
        EXPECT_EQ(writer.status(), Status::cancelled);
    }
    EXPECT_TRUE(isFolderEmpty());
}

TEST_F(AacFileWriterTest, LetsAnAppendGoThatWaitsWhenItIsCancelled) {
    AacFileWriter writer(path());
    ASSERT_TRUE(start(writer));
    std::jthread canceller([&] {
        std::this_thread::sleep_for(50ms);
        writer.cancelWriting();
    });
    const SampleBuffer buffer = makeBuffer(0, 44100, sine);
    const auto begin = std::chrono::steady_clock::now();
    while (writer.append(buffer))
        ASSERT_LT(std::chrono::steady_clock::now() - begin, 20s);
    EXPECT_EQ(writer.status(), Status::cancelled);
}

TEST_F(AacFileWriterTest, LeavesNothingWhenItIsDroppedUnfinished) {
    {
        AacFileWriter writer(path());
        ASSERT_TRUE(start(writer));
        append(writer, 44100, sine);
    }
    EXPECT_TRUE(isFolderEmpty());
}

TEST_F(AacFileWriterTest, EndsCompletedOrCancelledButNeverBetween) {
    for (int delay = 0; delay < 20; ++delay) {
        Status status = Status::unknown;
        {
            AacFileWriter writer(path());
            ASSERT_TRUE(start(writer));
            append(writer, 20'000, sine);
            std::jthread canceller([&] {
                std::this_thread::sleep_for(std::chrono::milliseconds(delay));
                writer.cancelWriting();
            });
            writer.finishWriting();
            status = writer.status();
        }
        ASSERT_TRUE(status == Status::completed || status == Status::cancelled);
        ASSERT_EQ(std::filesystem::exists(path()), status == Status::completed) << delay;
        std::filesystem::remove(path());
    }
}

TEST_F(AacFileWriterTest, StaysCompletedWhenItIsCancelledAfterwards) {
    AacFileWriter writer(path());
    ASSERT_TRUE(start(writer));
    append(writer, 44100, sine);
    writer.finishWriting();
    writer.cancelWriting();
    EXPECT_EQ(writer.status(), Status::completed);
    EXPECT_TRUE(std::filesystem::exists(path()));
}

} // namespace

} // namespace boxlift::media
