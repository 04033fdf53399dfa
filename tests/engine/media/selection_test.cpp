#include "engine/media/selection.h"

#include <gtest/gtest.h>

#include "engine/media/file_composition.h"
#include "engine/media/passthrough_copier.h"
#include "engine/media/source_fixture.h"

namespace boxlift::media {

namespace {

using test::audioOf;
using test::mediaOf;
using test::openFile;
using test::videoOf;

class SelectionTest : public test::SourceTest {
protected:
    /// Sound, picture, sound and words.
    static boxlift::test::MediaSpec wholeSpec() {
        auto spec = mediaOf("mp4", {videoOf("mpeg4")}, {audioOf("aac"), audioOf("aac")});
        spec.subtitles = {{.events = {{0, 1, "words"}}}};
        return spec;
    }
};

/// An asset of some other making.
class Stranger : public Asset {
public:
    bool isReadable() const override { return true; }
    Time duration() const override { return Time::fromSeconds(1); }
    std::vector<std::shared_ptr<const AssetTrack>> tracks() const override { return {}; }
};

} // namespace

TEST_F(SelectionTest, OfAFileIsItsSoundAndPicture) {
    MAKE_SOURCE(wholeSpec());
    const auto asset = openFile(source());
    const auto selection = Selection::of(*asset);
    ASSERT_TRUE(selection);
    EXPECT_TRUE(selection->isWhole);
    EXPECT_EQ(selection->file, asset->file());
    EXPECT_EQ(selection->streams, (std::vector{0, 1, 2}));
    EXPECT_EQ(selection->transforms, std::vector<std::optional<AffineTransform>>(3));
    EXPECT_TRUE(selection->hasVideo);
    EXPECT_TRUE(selection->hasAudio);
    EXPECT_TRUE(selection->contains(2));
    EXPECT_FALSE(selection->contains(3));
}

TEST_F(SelectionTest, OfACompositionIsItsTracksWithTheirTransforms) {
    MAKE_SOURCE(wholeSpec());
    const auto asset = openFile(source());
    const auto track = asset->tracks()[0];
    FileComposition composition;
    composition.addMutableTrack(MediaType::audio, 0);
    const auto shown = composition.addMutableTrack(MediaType::video, 0);
    shown->insertTimeRange(track->timeRange(), track, track->timeRange().start);
    shown->setPreferredTransform({-1, 0, 0, -1, 160, 120});
    const auto selection = Selection::of(composition);
    ASSERT_TRUE(selection);
    EXPECT_FALSE(selection->isWhole);
    EXPECT_EQ(selection->file, asset->file());
    EXPECT_EQ(selection->streams, std::vector{0});
    EXPECT_EQ(selection->transforms.at(0), (AffineTransform{-1, 0, 0, -1, 160, 120}));
    EXPECT_TRUE(selection->hasVideo);
    EXPECT_FALSE(selection->hasAudio);
}

TEST_F(SelectionTest, IsNothingWithoutSoundOrPicture) {
    auto spec = mediaOf("mp4", {});
    spec.subtitles = {{.events = {{0, 1, "words"}}}};
    MAKE_SOURCE(spec);
    EXPECT_FALSE(Selection::of(*openFile(source())));
    EXPECT_FALSE(Selection::of(FileComposition()));
    EXPECT_FALSE(Selection::of(Stranger()));
}

TEST_F(SelectionTest, IsNothingOfAProtectedFile) {
    MAKE_SOURCE(mediaOf("mp4", {}, {audioOf("aac")}));
    std::string bytes = boxlift::test::readFile(source());
    const auto entry = bytes.rfind("mp4a");
    ASSERT_NE(entry, std::string::npos);
    boxlift::test::writeFile(source(), bytes.replace(entry, 4, "enca"));
    EXPECT_FALSE(Selection::of(*openFile(source())));
}

} // namespace boxlift::media
