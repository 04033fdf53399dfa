#include "engine/media/source_check.h"

#include <gtest/gtest.h>

#include <optional>
#include <vector>

#include "engine/media/av/demuxer.h"
#include "engine/media/box_writer.h"
#include "engine/media/error.h"
#include "engine/media/source_fixture.h"
#include "support/media_boxes.h"

namespace boxlift::media {

namespace {

using test::audioOf;
using test::mediaOf;
using test::videoOf;

class SourceCheckTest : public test::SourceTest {
protected:
    /// A movie whose sound is done after a quarter of the picture's time, index in front.
    static boxlift::test::MediaSpec movie() {
        auto audio = audioOf("aac");
        audio.seconds = 0.25;
        auto spec = mediaOf("mp4", {videoOf("mpeg4")}, {audio});
        spec.muxerOptions = {{"movflags", "faststart"}};
        return spec;
    }
    std::optional<ErrorKind> check(const std::vector<int>& streams) const {
        const auto demuxer =
            av::Demuxer::open(InputFile::open(source()), av::ProbeDepth::header, {});
        try {
            checkIndexedSamples(demuxer->context(), streams, *demuxer->file());
        } catch (const Error& error) {
            return error.kind();
        }
        return std::nullopt;
    }
    void cut(std::uintmax_t bytes) const {
        std::filesystem::resize_file(source(), std::filesystem::file_size(source()) - bytes);
    }
};

std::optional<ErrorKind> kindOfEnd(Time declared, Time reached) {
    try {
        checkDeclaredEnd(declared, reached, "/source");
    } catch (const Error& error) {
        return error.kind();
    }
    return std::nullopt;
}

Time seconds(double value) {
    return Time::fromSeconds(value);
}

} // namespace

TEST_F(SourceCheckTest, AcceptsAWholeMovie) {
    MAKE_SOURCE(movie());
    EXPECT_EQ(check({0, 1}), std::nullopt);
}

TEST_F(SourceCheckTest, FindsASampleThatWasCutOff) {
    MAKE_SOURCE(movie());
    ASSERT_EQ(boxlift::test::topLevelBoxTypes(source()).back(), "mdat");
    cut(1);
    EXPECT_EQ(check({0}), ErrorKind::sourceEndsEarly);
}

TEST_F(SourceCheckTest, LooksAtTheListedStreamsAlone) {
    MAKE_SOURCE(movie());
    cut(1);
    EXPECT_EQ(check({1}), std::nullopt);
    EXPECT_EQ(check({}), std::nullopt);
    EXPECT_EQ(check({0, 1}), ErrorKind::sourceEndsEarly);
}

TEST_F(SourceCheckTest, FindsSamplesThatLieInAnotherFile) {
    MAKE_SOURCE(movie());
    constexpr std::string_view path[] = {"moov", "trak", "mdia", "minf", "dinf", "dref"};
    const std::string bytes = boxlift::test::readFile(source());
    boxlift::test::writeFile(source(), test::editBox(bytes, path, [](std::string_view) {
                                 return test::u32(0) + test::u32(1) +
                                        test::box("url ", test::u32(0) + "other.mov");
                             }));
    EXPECT_EQ(check({0}), ErrorKind::sourceUnreadable);
    EXPECT_NE(check({1}), ErrorKind::sourceUnreadable) << "only the first track's do";
}

TEST_F(SourceCheckTest, TellsWhichSampleIsMissing) {
    MAKE_SOURCE(movie());
    cut(1);
    const auto demuxer = av::Demuxer::open(InputFile::open(source()), av::ProbeDepth::header, {});
    try {
        checkIndexedSamples(demuxer->context(), std::vector{0}, *demuxer->file());
        FAIL() << "no error";
    } catch (const Error& error) {
        EXPECT_NE(error.technical().find("sample 24 of stream 0"), std::string::npos)
            << error.technical();
        EXPECT_NE(error.technical().find(source().string()), std::string::npos);
    }
}

TEST(CheckDeclaredEnd, LetsShortTracksEndASecondEarly) {
    EXPECT_EQ(kindOfEnd(seconds(10), seconds(10)), std::nullopt);
    EXPECT_EQ(kindOfEnd(seconds(10), seconds(9.01)), std::nullopt);
    EXPECT_EQ(kindOfEnd(seconds(10), seconds(8.9)), ErrorKind::sourceEndsEarly);
}

TEST(CheckDeclaredEnd, LetsLongTracksEndOnePerCentEarly) {
    EXPECT_EQ(kindOfEnd(seconds(1000), seconds(990.1)), std::nullopt);
    EXPECT_EQ(kindOfEnd(seconds(1000), seconds(989.9)), ErrorKind::sourceEndsEarly);
}

TEST(CheckDeclaredEnd, DoesNotMindTracksThatGoOn) {
    EXPECT_EQ(kindOfEnd(seconds(10), seconds(100)), std::nullopt);
}

TEST(CheckDeclaredEnd, KnowsNothingWithoutBothEnds) {
    EXPECT_EQ(kindOfEnd(Time(), seconds(1)), std::nullopt);
    EXPECT_EQ(kindOfEnd(seconds(10), Time()), std::nullopt);
}

} // namespace boxlift::media
