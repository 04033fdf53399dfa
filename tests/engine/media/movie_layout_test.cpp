#include "engine/media/movie_layout.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "engine/media/box_writer.h"
#include "model/cancelled.h"
#include "support/temp_folder.h"

namespace boxlift::media {

namespace {

using namespace std::chrono_literals;
using test::box;
using test::fullBox;
using test::longBox;
using test::u32;
using test::u64;

constexpr std::uint32_t movieScale = 1000;
constexpr std::uint32_t mediaScale = 48000;

/// An `mvhd` or `mdhd`, up to its length.
std::string header(const char* type, std::uint32_t timescale, std::uint64_t length,
                   int version = 0) {
    const std::string dates(version == 1 ? 16 : 8, '\0');
    return fullBox(type, version,
                   dates + u32(timescale) + test::bigEndian(length, version == 1 ? 8 : 4));
}

std::string trackHeader(std::uint32_t id, int version = 0) {
    return fullBox("tkhd", version, std::string(version == 1 ? 16 : 8, '\0') + u32(id) + u32(0));
}

struct EditRow {
    std::uint64_t length;
    std::int64_t mediaTime;
};

std::string edits(std::initializer_list<EditRow> rows, int version = 0) {
    const int bytes = version == 1 ? 8 : 4;
    std::string contents = u32(rows.size());
    for (const EditRow& row : rows)
        contents += test::bigEndian(row.length, bytes) +
                    test::bigEndian(static_cast<std::uint64_t>(row.mediaTime), bytes) +
                    u32(0x10000);
    return box("edts", fullBox("elst", version, contents));
}

std::string entries(std::initializer_list<const char*> types) {
    std::string contents = u32(types.size());
    for (const char* type : types)
        contents += box(type, std::string(28, '\0'));
    return box("minf", box("stbl", fullBox("stsd", 0, contents)));
}

std::string media(std::uint64_t length, const std::string& rest = entries({"avc1"})) {
    return box("mdia", header("mdhd", mediaScale, length) + rest);
}

std::string track(const std::string& contents) {
    return box("trak", contents);
}

std::string movie(const std::string& contents) {
    return box("ftyp", "isom") + box("moov", header("mvhd", movieScale, 0) + contents);
}

class MovieLayoutTest : public testing::Test {
protected:
    std::optional<MovieLayout> read(std::string_view bytes, std::stop_token stop = {}) {
        boxlift::test::writeFile(m_folder.path() / "movie", bytes);
        return MovieLayout::read(*InputFile::open(m_folder.path() / "movie"), stop);
    }
    /// The only track of a movie with these contents.
    MovieTrack readTrack(const std::string& contents) {
        const auto layout = read(movie(track(contents)));
        EXPECT_TRUE(layout && layout->tracks.size() == 1);
        return layout && !layout->tracks.empty() ? layout->tracks.front() : MovieTrack();
    }

private:
    boxlift::test::TempFolder m_folder;
};

} // namespace

TEST_F(MovieLayoutTest, ReadsIdentifierLengthAndSampleEntries) {
    const MovieTrack found = readTrack(trackHeader(7) + media(96000, entries({"avc1", "hvc1"})));
    EXPECT_EQ(found.id, 7U);
    EXPECT_EQ(found.mediaDuration, Time::fromSeconds(2));
    EXPECT_EQ(found.sampleEntries, (std::vector{fourCharCode("avc1"), fourCharCode("hvc1")}));
    EXPECT_FALSE(found.hasEdits);
}

TEST_F(MovieLayoutTest, KnowsTracksWithoutANumberOfTheirOwn) {
    const auto isFound = [this](const std::string& tracks) {
        return read(movie(tracks))->hasUnnumberedTrack();
    };
    EXPECT_FALSE(isFound(""));
    EXPECT_FALSE(isFound(track(trackHeader(1)) + track(trackHeader(0x7fffffff, 1))));
    EXPECT_TRUE(isFound(track(trackHeader(1)) + track(media(96000))));
    EXPECT_TRUE(isFound(track(trackHeader(0)) + track(trackHeader(1))));
    EXPECT_TRUE(isFound(track(trackHeader(0x80000000))));
}

TEST_F(MovieLayoutTest, ReadsLongHeaders) {
    const std::uint64_t hour = std::uint64_t{mediaScale} * 3600;
    const MovieTrack found =
        readTrack(trackHeader(9, 1) + box("mdia", header("mdhd", mediaScale, 100 * hour, 1)));
    EXPECT_EQ(found.id, 9U);
    EXPECT_EQ(found.mediaDuration, Time::fromSeconds(360000));
}

TEST_F(MovieLayoutTest, KnowsLengthsThatAreNotTold) {
    EXPECT_FALSE(readTrack(media(0xffffffff)).mediaDuration.isValid());
    EXPECT_FALSE(
        readTrack(box("mdia", header("mdhd", mediaScale, ~0ULL, 1))).mediaDuration.isValid());
    EXPECT_FALSE(readTrack(box("mdia", header("mdhd", 0, 5))).mediaDuration.isValid());
    EXPECT_FALSE(readTrack("").mediaDuration.isValid());
}

TEST_F(MovieLayoutTest, KnowsTracksWhoseSamplesLieElsewhere) {
    const auto references = [](std::initializer_list<int> flags) {
        std::string contents = u32(flags.size());
        for (const int flag : flags)
            contents += box("alis", u32(static_cast<std::uint64_t>(flag)) + "a place");
        return track(box("mdia", box("minf", box("dinf", fullBox("dref", 0, contents)))));
    };
    const auto isElsewhere = [&](std::initializer_list<int> flags) {
        return read(movie(references(flags)))->tracks.at(0).isElsewhere;
    };
    EXPECT_FALSE(isElsewhere({}));
    EXPECT_FALSE(isElsewhere({1}));
    EXPECT_TRUE(isElsewhere({0}));
    EXPECT_FALSE(isElsewhere({0, 1}));
    EXPECT_TRUE(isElsewhere({0, 0}));
}

TEST_F(MovieLayoutTest, TellsOfPartialKeys) {
    const auto hasPartialKeys = [this](const std::string& table) {
        const std::string tables = fullBox("stts", 0, u32(0)) + table;
        return read(movie(track(box("mdia", box("minf", box("stbl", tables))))))
            ->tracks.at(0)
            .hasPartialKeys;
    };
    EXPECT_FALSE(hasPartialKeys(""));
    EXPECT_FALSE(hasPartialKeys(fullBox("stss", 0, u32(0))));
    EXPECT_TRUE(hasPartialKeys(fullBox("stps", 0, u32(0))));
    EXPECT_TRUE(hasPartialKeys(fullBox("sbgp", 0, "rap " + u32(0))));
    EXPECT_FALSE(hasPartialKeys(fullBox("sbgp", 0, "roll" + u32(0))));
    EXPECT_FALSE(hasPartialKeys(box("sbgp", "ra")));
}

TEST_F(MovieLayoutTest, AddsUpEdits) {
    const MovieTrack found = readTrack(edits({{500, -1}, {250, -1}, {2000, 24000}, {1000, 0}}) +
                                       trackHeader(1) + media(96000));
    EXPECT_TRUE(found.hasEdits);
    EXPECT_EQ(found.mediaEdits, 2);
    EXPECT_EQ(found.leadingGap, Time::fromSeconds(0.75));
    EXPECT_EQ(found.mediaStart, Time::fromSeconds(0.5));
    EXPECT_EQ(found.editedEnd, Time::fromSeconds(3.75));
}

TEST_F(MovieLayoutTest, ReadsLongEdits) {
    const MovieTrack found = readTrack(edits({{7'200'000, -1}, {1000, 48000}}, 1) + media(96000));
    EXPECT_EQ(found.leadingGap, Time::fromSeconds(7200));
    EXPECT_EQ(found.mediaStart, Time::fromSeconds(1));
    EXPECT_EQ(found.editedEnd, Time::fromSeconds(7201));
}

TEST_F(MovieLayoutTest, CountsAGapOnlyBeforeTheMedia) {
    const MovieTrack found = readTrack(edits({{2000, 0}, {500, -1}, {1000, 96000}}) + media(96000));
    EXPECT_EQ(found.leadingGap, Time::zero());
    EXPECT_EQ(found.editedEnd, Time::fromSeconds(3.5));
}

TEST_F(MovieLayoutTest, TakesEmptyEditsAloneForNone) {
    EXPECT_FALSE(readTrack(edits({{2000, -1}}) + media(96000)).hasEdits);
    EXPECT_FALSE(readTrack(edits({}) + media(96000)).hasEdits);
}

TEST_F(MovieLayoutTest, FindsTracksByIdentifier) {
    const auto layout = read(movie(track(trackHeader(3)) + track(trackHeader(5) + media(48000))));
    ASSERT_TRUE(layout);
    ASSERT_NE(layout->track(5), nullptr);
    EXPECT_EQ(layout->track(5)->mediaDuration, Time::fromSeconds(1));
    EXPECT_EQ(layout->track(4), nullptr);
}

TEST_F(MovieLayoutTest, ReadsBoxesWhereverTheyStand) {
    const std::string contents = box("free", "????") + header("mvhd", movieScale, 0);
    const auto layout = read(box("mdat", std::string(5000, 'x')) +
                             box("moov", track(trackHeader(1) + edits({{1000, 0}})) + contents));
    ASSERT_TRUE(layout);
    ASSERT_EQ(layout->tracks.size(), 1U);
    EXPECT_EQ(layout->tracks[0].editedEnd, Time::fromSeconds(1));
}

TEST_F(MovieLayoutTest, ReadsBoxesWithLongSizes) {
    const std::string contents =
        header("mvhd", movieScale, 0) + longBox("trak", trackHeader(6) + media(48000));
    const auto layout = read(longBox("mdat", "xxxx") + longBox("moov", contents));
    ASSERT_TRUE(layout);
    ASSERT_EQ(layout->tracks.size(), 1U);
    EXPECT_EQ(layout->tracks[0].id, 6U);
}

TEST_F(MovieLayoutTest, LetsASizeOfZeroReachToTheEnd) {
    const std::string contents = header("mvhd", movieScale, 0) + track(trackHeader(8));
    const auto layout = read(u32(0) + "moov" + contents);
    ASSERT_TRUE(layout);
    ASSERT_EQ(layout->tracks.size(), 1U);
    EXPECT_EQ(layout->tracks[0].id, 8U);
    EXPECT_FALSE(read(u32(0) + "mdat" + movie("")));
}

TEST_F(MovieLayoutTest, KnowsFragmentedMovies) {
    EXPECT_TRUE(read(movie(track("") + box("mvex", "")))->isFragmented);
    EXPECT_FALSE(read(movie(track("")))->isFragmented);
}

TEST_F(MovieLayoutTest, KnowsProtectedTracks) {
    for (const char* type : {"drms", "drmi", "encv", "enca", "encs", "enct"})
        EXPECT_TRUE(
            read(movie(track(media(1)) + track(media(1, entries({"mp4a", type})))))->isProtected())
            << type;
    EXPECT_FALSE(read(movie(track(media(1, entries({"mp4a", "avc1"})))))->isProtected());
}

TEST_F(MovieLayoutTest, FindsNothingInOtherFiles) {
    EXPECT_FALSE(read(""));
    EXPECT_FALSE(read("moov"));
    EXPECT_FALSE(read(std::string(1000, 'x')));
    EXPECT_FALSE(read(std::string(1000, '\0')));
    EXPECT_FALSE(read(box("ftyp", "isom") + box("mdat", "????")));
}

TEST_F(MovieLayoutTest, SurvivesBeingCutOffAnywhere) {
    const std::string whole = movie(track(trackHeader(1) + edits({{500, -1}, {1000, 0}}) +
                                          media(96000, entries({"avc1", "encv"}))));
    for (std::size_t size = 0; size < whole.size(); ++size)
        EXPECT_NO_THROW(read(std::string_view(whole).substr(0, size))) << size;
    EXPECT_TRUE(read(whole)->isProtected());
}

TEST_F(MovieLayoutTest, SurvivesSizesThatLie) {
    for (const std::uint32_t size : {2U, 7U, 9U, 0x7fffffffU, 0xffffffffU}) {
        const auto layout =
            read(movie(track(trackHeader(4)) + u32(size) + "trak" + trackHeader(5)));
        ASSERT_TRUE(layout);
        EXPECT_EQ(layout->tracks.at(0).id, 4U);
    }
    for (const std::uint64_t size : {0ULL, 15ULL, 1ULL << 62, 1ULL << 63, ~0ULL})
        EXPECT_NO_THROW(read(u32(1) + "moov" + u64(size) + header("mvhd", 1, 1))) << size;
}

TEST_F(MovieLayoutTest, BelievesNoCountThatItsBoxCannotHold) {
    const std::string oneEdit = u32(0xffffffff) + u32(1000) + u32(0) + u32(0x10000);
    const MovieTrack cut = readTrack(box("edts", fullBox("elst", 0, oneEdit)) + media(96000));
    EXPECT_EQ(cut.mediaEdits, 1);
    EXPECT_EQ(cut.editedEnd, Time::fromSeconds(1));
    const std::string oneEntry = u32(0xffffffff) + box("avc1", "");
    const MovieTrack entry =
        readTrack(box("mdia", box("minf", box("stbl", fullBox("stsd", 0, oneEntry)))));
    EXPECT_EQ(entry.sampleEntries, std::vector{fourCharCode("avc1")});
}

TEST_F(MovieLayoutTest, AddsUpEditsOfCenturiesWithoutOverflow) {
    const std::uint64_t centuries = std::uint64_t{1000} * 3600 * 24 * 365 * 200;
    const MovieTrack found = readTrack(
        edits({{centuries, 0}, {centuries, 0}, {centuries, 0}, {centuries, 0}}, 1) + media(96000));
    EXPECT_TRUE(found.hasEdits);
    EXPECT_FALSE(found.editedEnd.isValid());
}

TEST_F(MovieLayoutTest, IsNotLedAstrayByBoxesInsideOfBoxes) {
    const std::string other = box("mdia", box("mdia", header("mdhd", mediaScale, 48000)));
    EXPECT_FALSE(readTrack(other).mediaDuration.isValid());
    EXPECT_FALSE(readTrack(box("minf", box("edts", ""))).hasEdits);
}

TEST_F(MovieLayoutTest, SurvivesADeepNest) {
    std::string heads;
    constexpr std::uint32_t depth = 200'000;
    for (std::uint32_t left = depth; left > 0; --left)
        heads += u32(left * 8) + "mdia";
    const auto begin = std::chrono::steady_clock::now();
    const auto layout = read(box("moov", box("trak", heads)));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 10s);
    ASSERT_TRUE(layout);
    EXPECT_FALSE(layout->tracks.at(0).mediaDuration.isValid());
}

TEST_F(MovieLayoutTest, TakesBoundedTimeForAWideFile) {
    std::string row;
    for (int i = 0; i < 200'000; ++i)
        row += box("trak", "");
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_TRUE(read(movie(row)));
    EXPECT_FALSE(read(row + movie("")));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 10s);
}

TEST_F(MovieLayoutTest, StopsWhenAsked) {
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW(read(movie(""), stop.get_token()), Cancelled);
}

} // namespace boxlift::media
