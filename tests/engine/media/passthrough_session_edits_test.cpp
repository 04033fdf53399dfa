#include "engine/media/passthrough_session.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "engine/media/box_writer.h"
#include "engine/media/copy_fixture.h"
#include "support/media_boxes.h"
#include "support/media_decode.h"
#include "support/media_probe.h"

namespace boxlift::media {

namespace {

using boxlift::test::decodeVideo;
using boxlift::test::probe;
using boxlift::test::ProbedFile;
using boxlift::test::ProbedStream;
using boxlift::test::readFile;
using boxlift::test::writeFile;
using test::audioOf;
using test::mediaOf;
using test::openFile;
using test::u32;
using test::videoOf;

constexpr auto mp4 = FileType::AVFileTypeMPEG4;
constexpr auto mov = FileType::AVFileTypeQuickTimeMovie;

/// When what is copied is shown.
class PassthroughEditsTest : public test::CopyTest {
protected:
    ProbedFile copied(FileType type) const { return copied(type, type == mp4); }
    ProbedFile copied(FileType type, bool optimize) const {
        return CopyTest::copied(type, *openFile(source()), optimize);
    }

    /// The first track's only edit is made to last so many ticks of the movie.
    void cutEdit(std::uint64_t ticks) const {
        constexpr std::array<std::string_view, 4> path{"moov", "trak", "edts", "elst"};
        writeFile(source(), test::editBox(readFile(source()), path, [&](std::string_view box) {
                      EXPECT_EQ(box[7], 1) << "there are several edits";
                      return std::string(box.substr(0, 8)) + u32(ticks) +
                             std::string(box.substr(12));
                  }));
    }

    /// Reordered pictures, 25 a second, in a movie of 1000 ticks a second.
    boxlift::test::MediaSpec reordered() const {
        auto video = videoOf("libx264");
        video.bFrames = 3;
        auto spec = mediaOf("mov", {video});
        spec.muxerOptions = {{"movie_timescale", "1000"}};
        return spec;
    }
};

/// Presentation times are equal within a tick of the coarser clock.
void expectSameTimes(const ProbedStream& before, const ProbedStream& after) {
    const double tick =
        std::max(static_cast<double>(before.timeBase.numerator) / before.timeBase.denominator,
                 static_cast<double>(after.timeBase.numerator) / after.timeBase.denominator);
    ASSERT_EQ(after.packets.size(), before.packets.size());
    ASSERT_FALSE(before.packets.empty());
    for (std::size_t i = 0; i < before.packets.size(); ++i)
        EXPECT_NEAR(after.seconds(after.packets[i].pts.value()),
                    before.seconds(before.packets[i].pts.value()), tick)
            << i;
    EXPECT_NEAR(after.durationSeconds.value(), before.durationSeconds.value(), tick);
}

} // namespace

TEST_F(PassthroughEditsTest, EndWhereTheyDidAmongReorderedPictures) {
    for (const std::uint64_t shown : {520U, 560U, 600U, 640U}) {
        MAKE_SOURCE(reordered());
        cutEdit(shown);
        const double seconds = static_cast<double>(shown) / 1000;
        ASSERT_NEAR(openFile(source())->duration().seconds(), seconds, 0.001);
        const auto pictures = decodeVideo(source());
        for (const FileType type : {mp4, mov})
            for (const bool optimize : {true, false}) {
                const ProbedFile copy = copied(type, optimize);
                EXPECT_NEAR(copy.durationSeconds.value(), seconds, 0.001);
                EXPECT_NEAR(openFile(output())->duration().seconds(), seconds, 0.001);
                EXPECT_EQ(decodeVideo(output()).size(), pictures.size());
            }
    }
}

TEST_F(PassthroughEditsTest, EndWhereTheyDidWithALongerIndexInFront) {
    auto spec = reordered();
    spec.metadata = {{"make", "Maker"}};
    MAKE_SOURCE(spec);
    cutEdit(560);
    const ProbedFile copy = copied(mp4, true);
    EXPECT_EQ(copy.metadata.at("com.apple.quicktime.make"), "Maker");
    EXPECT_NEAR(copy.durationSeconds.value(), 0.56, 0.001);
    EXPECT_EQ(boxlift::test::topLevelBoxTypes(output()),
              (std::vector<std::string>{"ftyp", "moov", "mdat"}));
    EXPECT_EQ(decodeVideo(output()).size(), decodeVideo(source()).size());
}

TEST_F(PassthroughEditsTest, LeaveTheLastOfVaryingReorderedPicturesItsLength) {
    for (const double seconds : {1.0, 1.04, 1.08, 1.12}) {
        auto video = videoOf("libx264");
        video.bFrames = 3;
        video.variableFrameRate = true;
        video.seconds = seconds;
        MAKE_SOURCE(mediaOf("mp4", {video}));
        const ProbedFile before = probe(source());
        for (const FileType type : {mp4, mov}) {
            const ProbedFile copy = copied(type);
            expectSameTimes(before.video(), copy.video());
            EXPECT_NEAR(copy.durationSeconds.value(), before.durationSeconds.value(), 0.001);
        }
    }
}

TEST_F(PassthroughEditsTest, ShowPicturesWhenTheyWereShown) {
    for (const bool varies : {false, true})
        for (const int bFrames : {0, 2}) {
            auto video = videoOf("libx264");
            video.bFrames = bFrames;
            video.variableFrameRate = varies;
            MAKE_SOURCE(mediaOf("mov", {video}, {audioOf("aac")}));
            const ProbedFile before = probe(source());
            for (const FileType type : {mp4, mov}) {
                const ProbedFile copy = copied(type);
                expectSameTimes(before.video(), copy.video());
                expectSameTimes(before.audio(), copy.audio());
            }
        }
}

TEST_F(PassthroughEditsTest, LeaveWhatBeginsLateLate) {
    for (const bool soundIsLate : {false, true}) {
        auto video = videoOf("libx264");
        video.bFrames = 2;
        auto audio = audioOf("aac");
        (soundIsLate ? audio.startSeconds : video.startSeconds) = 0.5;
        MAKE_SOURCE(mediaOf("mov", {video}, {audio}));
        const ProbedFile before = probe(source());
        const double lead =
            before.video().startSeconds.value() - before.audio().startSeconds.value();
        ASSERT_NEAR(lead, soundIsLate ? -0.5 : 0.5, 0.05);
        for (const FileType type : {mp4, mov}) {
            const ProbedFile copy = copied(type);
            expectSameTimes(before.video(), copy.video());
            expectSameTimes(before.audio(), copy.audio());
        }
    }
}

TEST_F(PassthroughEditsTest, KeepAConstantRateConstant) {
    for (const boxlift::test::Ratio rate :
         {boxlift::test::Ratio{24000, 1001}, {25, 1}, {30000, 1001}, {60, 1}}) {
        auto video = videoOf("libx264");
        video.bFrames = 2;
        video.frameRate = rate;
        for (const char* format : {"mov", "mpegts"}) {
            MAKE_SOURCE(mediaOf(format, {video}));
            for (const FileType type : {mp4, mov}) {
                const ProbedFile copy = copied(type);
                const double step = 1.0 * rate.denominator / rate.numerator;
                std::vector<double> times;
                for (const auto& packet : copy.video().packets)
                    times.push_back(copy.video().seconds(packet.pts.value()));
                std::ranges::sort(times);
                // The stamps of broadcasts are rounded to 1/90,000 s.
                for (std::size_t i = 1; i < times.size(); ++i)
                    EXPECT_NEAR(times[i] - times[i - 1], step, 1.01 / 90000);
            }
        }
    }
}

} // namespace boxlift::media
