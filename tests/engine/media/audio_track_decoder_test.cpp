#include "engine/media/audio_track_decoder.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <optional>
#include <vector>

#include "engine/media/audio_files.h"
#include "engine/media/error.h"
#include "model/cancelled.h"
#include "support/media_boxes.h"
#include "support/temp_folder.h"

namespace boxlift::media {

namespace {

constexpr AudioFormat mono{44100, AV_CH_LAYOUT_MONO, AV_SAMPLE_FMT_FLT};

class AudioTrackDecoderTest : public testing::Test {
protected:
    std::filesystem::path path(const char* name) const { return m_folder.path() / name; }

    static std::vector<float> decode(const std::filesystem::path& path, int stream) {
        AudioTrackDecoder decoder(InputFile::open(path), stream, mono, {});
        std::vector<float> samples;
        std::vector<float> block(1000);
        std::size_t count = block.size();
        while (count == block.size()) {
            count = decoder.read(block);
            samples.insert(samples.end(), block.begin(),
                           block.begin() + static_cast<std::ptrdiff_t>(count));
        }
        return samples;
    }

    static std::optional<ErrorKind> failureOf(const std::filesystem::path& path) {
        try {
            decode(path, 0);
        } catch (const Error& error) {
            return error.kind();
        }
        return std::nullopt;
    }

    static std::size_t firstSound(const std::vector<float>& samples) {
        const auto sound = std::find_if(samples.begin(), samples.end(),
                                        [](float value) { return std::abs(value) > 0.02F; });
        return static_cast<std::size_t>(sound - samples.begin());
    }

private:
    test::TempFolder m_folder;
};

TEST_F(AudioTrackDecoderTest, EndsAtTheEditedEndOfAMovie) {
    test::MediaSpec spec{.format = "mp4", .audio = {{}}};
    spec.seconds = 44321.0 / 44100;
    spec.muxerOptions = {{"movie_timescale", "44100"}};
    BOXLIFT_MAKE_MEDIA(path("in.mp4"), spec);
    EXPECT_EQ(decode(path("in.mp4"), 0).size(), 44321U);
}

TEST_F(AudioTrackDecoderTest, TakesTheStartOfABroadcastFileOff) {
    test::MediaSpec spec{.format = "mpegts", .seconds = 2};
    spec.video = {{.codec = "mpeg2video"}};
    spec.audio = {{.codec = "mp2", .startSeconds = 0.5}};
    BOXLIFT_MAKE_MEDIA(path("in.ts"), spec);
    const auto samples = decode(path("in.ts"), 1);
    EXPECT_NEAR(static_cast<double>(firstSound(samples)), 22050, 1300);
    EXPECT_NEAR(static_cast<double>(samples.size()), 88200 + 22050, 2 * 1152);
}

TEST_F(AudioTrackDecoderTest, GivesTheSameWhateverTheSizeOfTheReads) {
    test::MediaSpec spec{.format = "wav", .audio = {{.codec = "pcm_s16le", .layout = "mono"}}};
    BOXLIFT_MAKE_MEDIA(path("in.wav"), spec);
    const auto expected = decode(path("in.wav"), 0);
    AudioTrackDecoder decoder(InputFile::open(path("in.wav")), 0, mono, {});
    std::vector<float> samples(44100 + 10);
    EXPECT_EQ(decoder.read(samples), 44100U);
    EXPECT_EQ(decoder.read(samples), 0U);
    samples.resize(44100);
    EXPECT_EQ(samples, expected);
}

TEST_F(AudioTrackDecoderTest, HearsAStop) {
    test::MediaSpec spec{.format = "wav", .seconds = 5, .audio = {{.codec = "pcm_s16le"}}};
    BOXLIFT_MAKE_MEDIA(path("in.wav"), spec);
    std::stop_source stop;
    AudioTrackDecoder decoder(InputFile::open(path("in.wav")), 0, mono, stop.get_token());
    std::vector<float> samples(4410);
    EXPECT_EQ(decoder.read(samples), samples.size());
    stop.request_stop();
    samples.resize(5 * 44100);
    EXPECT_THROW(decoder.read(samples), Cancelled);
}

TEST_F(AudioTrackDecoderTest, SaysThatASourceEndsEarly) {
    test::MediaSpec spec{.format = "flac", .seconds = 10, .audio = {{.codec = "flac"}}};
    BOXLIFT_MAKE_MEDIA(path("in.flac"), spec);
    test::truncateFile(path("in.flac"), 0.8);
    EXPECT_EQ(failureOf(path("in.flac")), ErrorKind::sourceEndsEarly);
}

// All of the file is there, so it is no shorter than it says.
TEST_F(AudioTrackDecoderTest, SaysThatItCannotDecodeALastThirdOfNonsense) {
    test::MediaSpec spec{.format = "mov", .seconds = 9, .audio = {{.codec = "aac"}}};
    BOXLIFT_MAKE_MEDIA(path("in.mov"), spec);
    ASSERT_EQ(failureOf(path("in.mov")), std::nullopt);
    std::string bytes = test::readFile(path("in.mov"));
    const auto boxes = test::topLevelBoxes(path("in.mov"));
    const auto media = std::ranges::find(boxes, "mdat", &test::Box::type);
    ASSERT_NE(media, boxes.end());
    const std::size_t third = media->size / 3;
    bytes.replace(media->offset + media->size - third, third, third, '\xff');
    test::writeFile(path("in.mov"), bytes);
    EXPECT_EQ(failureOf(path("in.mov")), ErrorKind::cannotDecode);
}

} // namespace

} // namespace boxlift::media
