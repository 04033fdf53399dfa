#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "support/media_decode.h"
#include "support/media_generator.h"
#include "support/media_measure.h"
#include "support/media_probe.h"
#include "support/temp_folder.h"

namespace boxlift::test {
namespace {

/// A container with codecs that it takes, and what a prober calls them.
struct FormatCase {
    std::string name;
    MediaSpec spec;
    std::string demuxer;
    std::string videoCodec{};
    std::string audioCodec{};
};

/// How GoogleTest names a case.
std::ostream& operator<<(std::ostream& output, const FormatCase& format) {
    return output << format.name;
}

MediaSpec sound(const std::string& format, const AudioSpec& audio) {
    return {.format = format, .audio = {audio}};
}

MediaSpec picture(const std::string& format, const VideoSpec& video) {
    return {.format = format, .video = {video}};
}

MediaSpec both(const std::string& format, const std::string& video, const std::string& audio) {
    return {.format = format, .video = {{.codec = video}}, .audio = {{.codec = audio}}};
}

MediaSpec digitalVideo() {
    return {.format = "dv",
            .video = {{.codec = "dvvideo", .width = 720, .height = 576}},
            .audio = {{.codec = "pcm_s16le", .sampleRate = 48000}}};
}

class MediaFormats : public ::testing::TestWithParam<FormatCase> {
protected:
    TempFolder m_folder;
};

void expectVideo(const std::filesystem::path& path, const ProbedFile& file,
                 const FormatCase& format) {
    if (format.videoCodec.empty()) {
        EXPECT_TRUE(file.all(StreamKind::video).empty());
        return;
    }
    EXPECT_EQ(file.video().codec, format.videoCodec);
    const auto frames = decodeVideo(path);
    ASSERT_EQ(frames.size(), 25U);
    EXPECT_EQ(frameNumber(frames.front()), 0);
    EXPECT_EQ(frameNumber(frames.back()), 24);
}

void expectAudio(const std::filesystem::path& path, const ProbedFile& file,
                 const FormatCase& format) {
    if (format.audioCodec.empty()) {
        EXPECT_TRUE(file.all(StreamKind::audio).empty());
        return;
    }
    EXPECT_EQ(file.audio().codec, format.audioCodec);
    const DecodedAudio audio = decodeAudio(path);
    const auto second = static_cast<std::size_t>(audio.sampleRate);
    EXPECT_NEAR(audio.seconds(), 1, 0.1);
    EXPECT_NEAR(toneFrequency(audio, {.begin = second / 4, .end = second / 2}), 440, 1);
    EXPECT_NEAR(toneLevel(audio, 440, {.begin = second / 4, .end = second / 2}), 0.5, 0.05);
}

TEST_P(MediaFormats, AreReadBackAsWhatWasAsked) {
    const FormatCase& format = GetParam();
    const auto path = m_folder.path() / "clip";
    try {
        makeMedia(path, format.spec);
    } catch (const MissingEncoder& error) {
        GTEST_SKIP() << error.what();
    }
    const ProbedFile file = probe(path);
    EXPECT_EQ(file.format, format.demuxer);
    expectVideo(path, file, format);
    expectAudio(path, file, format);
}

const std::string mov = "mov,mp4,m4a,3gp,3g2,mj2";
const std::string matroska = "matroska,webm";

const FormatCase containers[] = {
    {"Mp4", both("mp4", "libx264", "aac"), mov, "h264", "aac"},
    {"M4a", sound("ipod", {}), mov, "", "aac"},
    {"Mp3", sound("mp3", {.codec = "libmp3lame"}), "mp3", "", "mp3"},
    {"Mp2", sound("mp2", {.codec = "mp2"}), "mp3", "", "mp2"},
    {"Adts", sound("adts", {}), "aac", "", "aac"},
    {"Ac3", sound("ac3", {.codec = "ac3"}), "ac3", "", "ac3"},
    {"Flac", sound("flac", {.codec = "flac"}), "flac", "", "flac"},
    {"Wave", sound("wav", {.codec = "pcm_s16le"}), "wav", "", "pcm_s16le"},
    {"Wave64", sound("w64", {.codec = "pcm_s24le"}), "w64", "", "pcm_s24le"},
    {"Aiff", sound("aiff", {.codec = "pcm_s16be"}), "aiff", "", "pcm_s16be"},
    {"Caf", sound("caf", {.codec = "pcm_f32le"}), "caf", "", "pcm_f32le"},
    {"Au", sound("au", {.codec = "pcm_s16be"}), "au", "", "pcm_s16be"},
    {"Ogg", sound("ogg", {.codec = "libopus", .sampleRate = 48000}), "ogg", "", "opus"},
    {"TransportStream", both("mpegts", "libx264", "aac"), "mpegts", "h264", "aac"},
    {"ProgramStream", both("mpeg", "mpeg2video", "mp2"), "mpeg", "mpeg2video", "mp2"},
    {"Vob", both("vob", "mpeg2video", "ac3"), "mpeg", "mpeg2video", "ac3"},
    {"Dv", digitalVideo(), "dv", "dvvideo", "pcm_s16le"},
    {"Matroska", both("matroska", "libx264", "flac"), matroska, "h264", "flac"},
    {"Avi", both("avi", "mpeg4", "libmp3lame"), "avi", "mpeg4", "mp3"},
};

const FormatCase codecs[] = {
    {"Hevc", picture("mov", {.codec = "libx265"}), mov, "hevc"},
    {"Mpeg2", picture("mov", {.codec = "mpeg2video"}), mov, "mpeg2video"},
    {"Mpeg4", picture("mov", {.codec = "mpeg4"}), mov, "mpeg4"},
    {"ProRes", picture("mov", {.codec = "prores_ks"}), mov, "prores"},
    {"MotionJpeg", picture("mov", {.codec = "mjpeg"}), mov, "mjpeg"},
    {"Animation", picture("mov", {.codec = "qtrle"}), mov, "qtrle"},
    {"Png", picture("mov", {.codec = "png"}), mov, "png"},
    {"Raw", picture("mov", {.codec = "rawvideo", .pixelFormat = "uyvy422"}), mov, "rawvideo"},
    {"Ffv1", picture("matroska", {.codec = "ffv1"}), matroska, "ffv1"},
    {"TenBits", picture("mov", {.pixelFormat = "yuv420p10le"}), mov, "h264"},
    {"Alac", sound("ipod", {.codec = "alac"}), mov, "", "alac"},
    {"Pcm24", sound("mov", {.codec = "pcm_s24le"}), mov, "", "pcm_s24le"},
    {"PcmBigEndian", sound("mov", {.codec = "pcm_s16be"}), mov, "", "pcm_s16be"},
    {"PcmFloat", sound("mov", {.codec = "pcm_f32le"}), mov, "", "pcm_f32le"},
    {"Mp3InMp4", sound("mp4", {.codec = "libmp3lame"}), mov, "", "mp3"},
    {"Ac3InMov", sound("mov", {.codec = "ac3", .layout = "5.1(side)"}), mov, "", "ac3"},
    {"SurroundAac", sound("mov", {.layout = "5.1", .bitRate = 384000}), mov, "", "aac"},
    {"MonoAac", sound("mov", {.sampleRate = 22050, .layout = "mono"}), mov, "", "aac"},
};

std::string nameOf(const ::testing::TestParamInfo<FormatCase>& info) {
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Containers, MediaFormats, ::testing::ValuesIn(containers), nameOf);
INSTANTIATE_TEST_SUITE_P(Codecs, MediaFormats, ::testing::ValuesIn(codecs), nameOf);

} // namespace
} // namespace boxlift::test
