#include "engine/media/index_trust.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "engine/media/box_writer.h"
#include "engine/media/packet_source.h"
#include "engine/media/passthrough_copier.h"
#include "engine/media/source_fixture.h"

namespace boxlift::media {

namespace {

using boxlift::test::readFile;
using boxlift::test::writeFile;
using test::audioOf;
using test::mediaOf;
using test::videoOf;
using Edit = std::function<std::string(std::string_view)>;

/// The generator's film, 25 pictures, has these key frames.
const std::vector<std::size_t> keysOfFilm{0, 10, 20};
constexpr std::size_t picturesOfFilm = 25;

struct Sample {
    int stream = 0;
    std::string payload{};
    std::int64_t shown = 0;
    std::int64_t decoded = 0;
    std::int64_t length = 0;
    bool isKey = false;
    bool isDisposable = false;

    bool operator==(const Sample&) const = default;
};
using Samples = std::vector<Sample>;

Sample sampleOf(const AVPacket& packet) {
    return {packet.stream_index,
            {reinterpret_cast<const char*>(packet.data), static_cast<std::size_t>(packet.size)},
            packet.pts,
            packet.dts,
            packet.duration,
            (packet.flags & AV_PKT_FLAG_KEY) != 0,
            (packet.flags & AV_PKT_FLAG_DISPOSABLE) != 0};
}

/// `next(packet)` until there are no more.
template <typename Next>
Samples collect(const Next& next) {
    const av::PacketPtr packet = av::makePacket();
    Samples samples;
    while (next(*packet)) {
        const av::PacketUnref guard{*packet};
        samples.push_back(sampleOf(*packet));
    }
    return samples;
}

/// Which of the pictures `property` holds for.
std::vector<std::size_t> picturesThat(const Samples& samples, bool Sample::*property) {
    std::vector<std::size_t> pictures;
    std::size_t number = 0;
    for (const Sample& sample : samples) {
        if (sample.stream != 0)
            continue;
        if (sample.*property)
            pictures.push_back(number);
        ++number;
    }
    return pictures;
}

/// A film of H.264 and AAC, whose index can be changed.
class IndexTrustTest : public test::SourceTest {
protected:
    bool makeFilm(int keyFrameInterval = 10) {
        auto video = videoOf("libx264");
        video.bFrames = 2;
        video.keyFrameInterval = keyFrameInterval;
        return make(mediaOf("mov", {video}, {audioOf("aac")}));
    }
    /// Of the pictures' sample table.
    void edit(const Edit& change) const {
        constexpr std::array<std::string_view, 5> place{"moov", "trak", "mdia", "minf", "stbl"};
        writeFile(source(), test::editBox(readFile(source()), place, change));
    }
    void listKeys(const std::vector<std::size_t>& pictures) const {
        edit([&](std::string_view tables) {
            constexpr std::array<std::string_view, 1> list{"stss"};
            return test::editBox(tables, list, [&](std::string_view) {
                std::string keys = test::u32(0) + test::u32(pictures.size());
                for (const std::size_t picture : pictures)
                    keys += test::u32(picture + 1);
                return keys;
            });
        });
    }
    void markDisposable(const std::vector<std::size_t>& pictures) const {
        std::string marks(picturesOfFilm, '\0');
        for (const std::size_t picture : pictures)
            marks[picture] = 2 << 2;
        edit([&](std::string_view tables) {
            return std::string(tables) + test::fullBox("sdtp", 0, marks);
        });
    }

    bool trusts() const { return open()->trustIndex({}); }
    Samples read(bool isTrusted) const {
        const auto opened = open();
        EXPECT_TRUE(!isTrusted || opened->trustIndex({}));
        return collect([&](AVPacket& packet) { return opened->next(packet); });
    }
    /// What a copy's container says of its samples.
    Samples readCopy() const {
        EXPECT_EQ(test::copyTo(output(), FileType::AVFileTypeMPEG4, source()).status,
                  ExportSession::Status::completed);
        const auto demuxer =
            av::Demuxer::open(InputFile::open(output()), av::ProbeDepth::index, {});
        return collect([&](AVPacket& packet) { return demuxer->read(packet); });
    }

    std::unique_ptr<PacketSource> open() const {
        return std::make_unique<PacketSource>(test::selectAll(source()), std::stop_token());
    }
};

} // namespace

TEST_F(IndexTrustTest, AreWhatALookIntoTheSamplesSays) {
    if (!makeFilm())
        GTEST_SKIP() << missing();
    const Samples parsed = read(false);
    ASSERT_EQ(picturesThat(parsed, &Sample::isKey), keysOfFilm);
    EXPECT_EQ(read(true), parsed);
}

// A look into the samples finds pictures from which decoding can begin. That a file's maker does
// not list them may have its reason.
TEST_F(IndexTrustTest, AreKeptWhereALookIntoTheSamplesSaysMore) {
    if (!makeFilm())
        GTEST_SKIP() << missing();
    listKeys({0, 20});
    ASSERT_EQ(picturesThat(read(false), &Sample::isKey), keysOfFilm);
    EXPECT_EQ(picturesThat(read(true), &Sample::isKey), (std::vector<std::size_t>{0, 20}));
    EXPECT_EQ(picturesThat(readCopy(), &Sample::isKey), (std::vector<std::size_t>{0, 20}));
}

// A look into the samples loses these marks.
TEST_F(IndexTrustTest, SayWhichPicturesNoOtherNeeds) {
    if (!makeFilm())
        GTEST_SKIP() << missing();
    const std::vector<std::size_t> disposable{2, 3, 24};
    markDisposable(disposable);
    EXPECT_EQ(picturesThat(read(true), &Sample::isDisposable), disposable);
    EXPECT_EQ(picturesThat(readCopy(), &Sample::isDisposable), disposable);
}

TEST_F(IndexTrustTest, AreNotTrustedWhereTheyTellNoKeyFrames) {
    if (!makeFilm())
        GTEST_SKIP() << missing();
    EXPECT_TRUE(trusts());
    listKeys({});
    EXPECT_FALSE(trusts());
    EXPECT_EQ(picturesThat(readCopy(), &Sample::isKey), keysOfFilm);

    std::filesystem::remove(output());
    edit([](std::string_view tables) {
        std::string unlisted(tables);
        return unlisted.replace(unlisted.find("stss"), 4, "free");
    });
    EXPECT_FALSE(trusts());
    EXPECT_EQ(picturesThat(readCopy(), &Sample::isKey), keysOfFilm);
}

// The library cannot tell it from an empty list.
TEST_F(IndexTrustTest, AreNotTrustedWhereOneIsAKeyFrame) {
    if (!makeFilm(100))
        GTEST_SKIP() << missing();
    EXPECT_FALSE(trusts());
}

TEST_F(IndexTrustTest, AreNotTrustedWhereTheLastSampleHasNoLength) {
    if (!makeFilm())
        GTEST_SKIP() << missing();
    constexpr std::array<std::string_view, 4> place{"moov", "trak", "mdia", "mdhd"};
    writeFile(source(), test::editBox(readFile(source()), place, [](std::string_view header) {
                  constexpr std::size_t lengthOffset = 16;
                  return std::string(header).replace(lengthOffset, 4, test::u32(1000));
              }));
    EXPECT_FALSE(trusts());
}

// Of which the library makes key frames like any other.
TEST_F(IndexTrustTest, AreNotTrustedWhereKeyFramesArePartial) {
    const std::string group = "rap " + test::u32(1) + test::u32(picturesOfFilm) + test::u32(1);
    const std::string partial[] = {
        test::fullBox("stps", 0, test::u32(1) + test::u32(5)),
        test::fullBox("sgpd", 1, "rap " + test::u32(1) + test::u32(1) + std::string(1, '\0')) +
            test::fullBox("sbgp", 0, group),
    };
    for (const std::string& tables : partial) {
        if (!makeFilm())
            GTEST_SKIP() << missing();
        EXPECT_TRUE(trusts());
        edit([&](std::string_view before) { return std::string(before) + tables; });
        EXPECT_FALSE(trusts());
        std::filesystem::remove(output());
        EXPECT_EQ(picturesThat(readCopy(), &Sample::isKey), keysOfFilm);
    }
}

TEST_F(IndexTrustTest, AreTrustedWithOtherGroups) {
    if (!makeFilm())
        GTEST_SKIP() << missing();
    edit([](std::string_view before) {
        return std::string(before) +
               test::fullBox("sbgp", 0,
                             "roll" + test::u32(1) + test::u32(picturesOfFilm) + test::u32(1));
    });
    EXPECT_TRUE(trusts());
}

TEST_F(IndexTrustTest, AreNotTrustedWhenTheFileHasChanged) {
    if (!makeFilm())
        GTEST_SKIP() << missing();
    const auto opened = open();
    const std::string before = readFile(source());
    // The same file, written anew in its place: other pictures, no movie, one that cannot be read.
    const auto changed = [&](std::string_view what, const std::string& into) {
        std::string bytes = before;
        bytes.replace(bytes.find(what), what.size(), into);
        writeFile(source(), bytes);
        return !opened->trustIndex({});
    };
    EXPECT_TRUE(changed("avc1", "mp4v"));
    EXPECT_TRUE(changed("moov", "junk"));
    EXPECT_TRUE(changed("stts", "junk"));
    writeFile(source(), before);
    EXPECT_TRUE(opened->trustIndex({}));
}

TEST_F(IndexTrustTest, AreNotTrustedWhereAllAreKeyFrames) {
    if (!makeFilm(1))
        GTEST_SKIP() << missing();
    EXPECT_FALSE(trusts());
}

TEST_F(IndexTrustTest, AreTrustedBesidePlainSoundAlone) {
    auto video = videoOf("libx264");
    for (const char* codec : {"aac", "alac", "pcm_s16le"}) {
        MAKE_SOURCE(mediaOf("mov", {video}, {audioOf(codec)}));
        EXPECT_TRUE(trusts()) << codec;
    }
    for (const char* codec : {"ac3", "libmp3lame"}) {
        MAKE_SOURCE(mediaOf("mov", {video}, {audioOf(codec)}));
        EXPECT_FALSE(trusts()) << codec;
    }
}

TEST_F(IndexTrustTest, AreNotTrustedWhereTheyAreNotAllInOneIndex) {
    auto spec = mediaOf("mp4", {videoOf("libx264")}, {audioOf("aac")});
    spec.muxerOptions = {{"movflags", "frag_keyframe+empty_moov"}};
    MAKE_SOURCE(spec);
    EXPECT_FALSE(trusts());
    MAKE_SOURCE(mediaOf("mpegts", {videoOf("libx264")}, {audioOf("aac")}));
    EXPECT_FALSE(trusts());
}

TEST_F(IndexTrustTest, NeedNotBeTrustedWhereNobodyLooksFurther) {
    MAKE_SOURCE(mediaOf("mov", {videoOf("mpeg4")}, {audioOf("aac")}));
    EXPECT_FALSE(trusts());
    MAKE_SOURCE(mediaOf("mp4", {}, {audioOf("aac")}));
    EXPECT_FALSE(trusts());
}

} // namespace boxlift::media
