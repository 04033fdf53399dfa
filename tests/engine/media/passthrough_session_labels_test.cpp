#include "engine/media/passthrough_session.h"

#include <gtest/gtest.h>

#include <array>

#include "engine/media/box_writer.h"
#include "engine/media/copy_fixture.h"
#include "support/media_probe.h"

namespace boxlift::media {

namespace {

using boxlift::test::probe;
using boxlift::test::ProbedFile;
using boxlift::test::readFile;
using boxlift::test::writeFile;
using test::audioOf;
using test::mediaOf;
using test::u32;
using test::videoOf;

constexpr auto mp4 = FileType::AVFileTypeMPEG4;
constexpr auto mov = FileType::AVFileTypeQuickTimeMovie;
constexpr auto m4a = FileType::AVFileTypeAppleM4A;

/// What tracks say of themselves.
class PassthroughLabelsTest : public test::CopyTest {
protected:
    /// Gives the source's first track, of pictures, a Dolby Vision configuration.
    void addDolbyVision(int profile) const {
        std::string record = {1, 0, static_cast<char>(profile << 1), 0x35,
                              static_cast<char>(profile == 5 ? 0 : 0x40)};
        record.resize(24);
        extendSampleEntry(test::box(profile > 7 ? "dvvC" : "dvcC", record));
    }
    void extendSampleEntry(const std::string& added) const {
        writeFile(source(), test::withSampleEntryBoxes(readFile(source()), added));
    }
    std::string configuration() const {
        const std::string bytes = readFile(output());
        for (const char* type : {"dvvC", "dvcC"})
            if (const auto at = bytes.find(type); at != std::string::npos)
                return bytes.substr(at, 28);
        return "none";
    }
};

} // namespace

TEST_F(PassthroughLabelsTest, KeepLanguagesThatQuickTimeHadNoNumberFor) {
    std::vector<boxlift::test::AudioSpec> tracks;
    const std::array languages{"deu", "ger", "nld", "ces", "zxx", "fra", "mul", "eng"};
    for (const char* language : languages) {
        tracks.push_back(audioOf("aac"));
        tracks.back().seconds = 0.2;
        tracks.back().language = language;
    }
    MAKE_SOURCE(mediaOf("mp4", {videoOf("mpeg4")}, tracks));
    for (const FileType type : {mp4, mov, m4a}) {
        const ProbedFile copy = copied(type);
        for (std::size_t i = 0; i < languages.size(); ++i)
            EXPECT_EQ(copy.audio(i).language, languages[i]);
    }
}

TEST_F(PassthroughLabelsTest, KeepDolbyVisionInEveryType) {
    for (const int profile : {5, 8}) {
        auto video = videoOf("libx265");
        video.seconds = 0.4;
        video.codecTag = "hvc1";
        video.encoderOptions = {{"x265-params", "log-level=none"}};
        MAKE_SOURCE(mediaOf("mp4", {video}, {audioOf("aac")}));
        addDolbyVision(profile);
        for (const FileType type : {mp4, mov}) {
            const ProbedFile copy = copied(type);
            const std::string described = configuration();
            ASSERT_EQ(described.size(), 28U);
            EXPECT_EQ(described[6], profile << 1);
            EXPECT_EQ(described[7], 0x35);
            EXPECT_EQ(described[8], profile == 5 ? 0 : 0x40);
            EXPECT_EQ(copy.video().codecTag, profile == 5 ? "dvh1" : "hvc1");
            EXPECT_EQ(copy.video().payloadHashes(), probe(source()).video().payloadHashes());
        }
    }
}

// What a screen must be capable of, in units of 0.00002 and of 0.0001 cd/m2 (ITU-T H.265, D.2.28).
TEST_F(PassthroughLabelsTest, KeepTheLightOfHighRange) {
    const std::string mastering = test::box(
        "mdcv", test::bigEndian(13250, 2) + test::bigEndian(34500, 2) + test::bigEndian(7500, 2) +
                    test::bigEndian(3000, 2) + test::bigEndian(34000, 2) +
                    test::bigEndian(16000, 2) + test::bigEndian(15635, 2) +
                    test::bigEndian(16450, 2) + u32(10'000'000) + u32(50));
    const std::string level = test::box("clli", test::bigEndian(1000, 2) + test::bigEndian(400, 2));
    auto video = videoOf("libx265");
    video.seconds = 0.4;
    video.codecTag = "hvc1";
    video.pixelFormat = "yuv420p10le";
    video.colour = {"bt2020", "smpte2084", "bt2020nc", "tv"};
    MAKE_SOURCE(mediaOf("mp4", {video}));
    extendSampleEntry(mastering + level);
    for (const FileType type : {mp4, mov}) {
        const ProbedFile copy = copied(type);
        const std::string bytes = readFile(output());
        EXPECT_NE(bytes.find(mastering), std::string::npos);
        EXPECT_NE(bytes.find(level), std::string::npos);
        EXPECT_EQ(copy.video().colour, video.colour);
        EXPECT_EQ(copy.video().payloadHashes(), probe(source()).video().payloadHashes());
    }
}

TEST_F(PassthroughLabelsTest, KeepHowPicturesAreProjected) {
    const std::string stereo = test::fullBox("st3d", 0, "\1");
    const std::string pose = test::fullBox("prhd", 0, u32(0x10000) + u32(0xffff'0000) + u32(0));
    const std::string layout =
        test::fullBox("equi", 0, u32(0) + u32(0) + u32(0x4000'0000) + u32(0x4000'0000));
    const std::string head = test::fullBox("svhd", 0, std::string("maker", 6));
    MAKE_SOURCE(mediaOf("mp4", {videoOf("libx264")}));
    extendSampleEntry(stereo + test::box("sv3d", head + test::box("proj", pose + layout)));
    for (const FileType type : {mp4, mov})
        for (const bool optimize : {false, true}) {
            copied(type, *test::openFile(source()), optimize);
            const std::string bytes = readFile(output());
            for (const std::string& kept : {stereo, pose, layout}) {
                EXPECT_NE(bytes.find(kept), std::string::npos) << kept.substr(4, 4);
                EXPECT_EQ(bytes.find(kept), bytes.rfind(kept)) << "twice";
            }
        }
}

// The library refuses a track of which the samples say another aspect than the container.
TEST_F(PassthroughLabelsTest, KeepTheContainersPixelAspectBeforeThatOfTheSamples) {
    auto video = videoOf("libx264");
    video.sampleAspect = {4, 3};
    MAKE_SOURCE(mediaOf("mov", {video}));
    std::string bytes = readFile(source());
    const auto aspect = bytes.find("pasp");
    ASSERT_NE(aspect, std::string::npos);
    writeFile(source(), bytes.replace(aspect + 4, 8, u32(12) + u32(11)));
    for (const FileType type : {mp4, mov})
        EXPECT_EQ(copied(type).video().sampleAspect, (boxlift::test::Ratio{12, 11}));
}

} // namespace boxlift::media
