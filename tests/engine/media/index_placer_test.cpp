#include "engine/media/index_placer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

#include "engine/media/box_writer.h"
#include "engine/media/error.h"
#include "support/temp_folder.h"

namespace boxlift::media {

namespace {

using test::box;
using test::fullBox;
using test::longBox;
using test::u32;

/// "ftyp", and what else belongs in front of the index.
const std::string start = box("ftyp", "kind");
const std::string added = box("meta", "added");

std::string indexOf(const std::string& tables) {
    return box("moov", box("trak", box("mdia", box("minf", box("stbl", tables)))));
}

std::string freeBox(std::size_t size) {
    return box("free", std::string(size - 8, '\0'));
}

/// A movie as it is before its index is placed.
struct Movie {
    std::size_t room = 0;
    std::string media = box("mdat", "media");
    std::string tail = box("moov", box("free", "something"));
    std::map<std::uint32_t, SampleRuns> gathered{};
};

class IndexPlacerTest : public testing::Test {
protected:
    std::string placed(const Movie& movie, IndexPlace place, const std::string& more = {}) {
        const auto path = m_folder.path() / "out";
        std::filesystem::remove(path);
        const auto file = OutputFile::create(path);
        const std::string contents = start + movie.media;
        const auto room = static_cast<std::int64_t>(movie.room);
        EXPECT_EQ(file->writeAt(room, std::as_bytes(std::span(contents))), 0);
        WrittenMovie written{room, room + static_cast<std::int64_t>(contents.size()), {}};
        written.tail.assign(movie.tail.begin(), movie.tail.end());
        written.gathered = movie.gathered;
        IndexChanges changes;
        changes.movie.assign(more.begin(), more.end());
        placeIndex(*file, std::move(written), changes, place, m_moved);
        m_bytesWritten = file->bytesWritten();
        file->publish();
        return boxlift::test::readFile(path);
    }

    std::function<void(double)> m_moved = [this](double fraction) {
        m_fractions.push_back(fraction);
    };
    std::vector<double> m_fractions;
    std::int64_t m_bytesWritten = 0;

private:
    boxlift::test::TempFolder m_folder;
};

} // namespace

TEST_F(IndexPlacerTest, PutsAnIndexBehindTheMedia) {
    for (const std::string& media : {box("mdat", "media"), longBox("mdat", "media")}) {
        const Movie movie{.media = media};
        EXPECT_EQ(placed(movie, IndexPlace::end), start + media + movie.tail);
        EXPECT_EQ(placed(movie, IndexPlace::end, added),
                  start + media + box("moov", box("free", "something") + added));
    }
}

TEST_F(IndexPlacerTest, PutsAnIndexIntoItsRoom) {
    Movie movie;
    movie.room = movie.tail.size();
    EXPECT_EQ(placed(movie, IndexPlace::front), start + movie.tail + movie.media);
    EXPECT_TRUE(m_fractions.empty());
}

TEST_F(IndexPlacerTest, MakesABoxOfTheRoomThatIsLeft) {
    // One smaller and one larger than what the box "ftyp" leaves behind.
    for (const std::size_t left : {8U, 9U, 100U, 10'000U}) {
        Movie movie;
        movie.room = movie.tail.size() + added.size() + left;
        EXPECT_EQ(placed(movie, IndexPlace::front, added),
                  start + box("moov", box("free", "something") + added) + freeBox(left) +
                      movie.media);
        EXPECT_TRUE(m_fractions.empty());
        EXPECT_LT(m_bytesWritten, 300);
    }
}

TEST_F(IndexPlacerTest, MovesTheMediaWhereTheRoomIsTooSmall) {
    for (const std::size_t room : {0U, 1U, 20U}) {
        m_fractions.clear();
        const Movie movie{.room = room};
        EXPECT_EQ(placed(movie, IndexPlace::front), start + movie.tail + movie.media);
        EXPECT_EQ(m_fractions, (std::vector<double>{0, 1}));
    }
}

TEST_F(IndexPlacerTest, LeavesRoomForABoxWhereLessIsLeft) {
    Movie movie;
    movie.room = movie.tail.size() + 3;
    EXPECT_EQ(placed(movie, IndexPlace::front), start + movie.tail + freeBox(8) + movie.media);
}

TEST_F(IndexPlacerTest, MovesMediaOfManyBlocks) {
    std::string media(3'500'000, ' ');
    for (std::size_t i = 0; i < media.size(); ++i)
        media[i] = static_cast<char>(i * 7 + i / 1000);
    const Movie movie{.media = box("mdat", media)};
    EXPECT_EQ(placed(movie, IndexPlace::front), start + movie.tail + movie.media);
    EXPECT_GE(m_fractions.size(), 4U);
    EXPECT_TRUE(std::ranges::is_sorted(m_fractions));
    EXPECT_EQ(m_fractions.back(), 1);
}

TEST_F(IndexPlacerTest, EndsMovingWhenItsListenerThrows) {
    m_moved = [](double) { throw std::runtime_error("enough"); };
    EXPECT_THROW(placed({}, IndexPlace::front), std::runtime_error);
}

TEST_F(IndexPlacerTest, TellsWhereTheMovedMediaIs) {
    const std::string before = fullBox("stco", 0, u32(2) + u32(100) + u32(70'000));
    const std::string longBefore = fullBox("co64", 0, u32(1) + test::u64(7'000'000'000));
    const std::string tail = box("moov", indexOf(before).substr(8) + indexOf(longBefore).substr(8));
    const std::size_t by = tail.size();
    const std::string after = fullBox("stco", 0, u32(2) + u32(100 + by) + u32(70'000 + by));
    const std::string longAfter = fullBox("co64", 0, u32(1) + test::u64(7'000'000'000 + by));
    const Movie movie{.tail = tail};
    EXPECT_EQ(placed(movie, IndexPlace::front),
              start + box("moov", indexOf(after).substr(8) + indexOf(longAfter).substr(8)) +
                  movie.media);
}

TEST_F(IndexPlacerTest, WidensPlacesThatMoveBeyondFourGibibytes) {
    const Movie movie{.tail = indexOf(fullBox("stco", 0, u32(2) + u32(100) + u32(0xfffffff0)))};
    const std::size_t by = movie.tail.size() + 8;
    const std::string after =
        indexOf(fullBox("co64", 0, u32(2) + test::u64(100 + by) + test::u64(0xfffffff0 + by)));
    ASSERT_EQ(after.size(), by);
    EXPECT_EQ(placed(movie, IndexPlace::front), start + after + movie.media);
}

TEST_F(IndexPlacerTest, LeavesPlacesAloneWhereNothingMoves) {
    const std::string tail = indexOf(fullBox("stco", 0, u32(1) + u32(0xfffffff0)));
    const Movie movie{.room = tail.size(), .tail = tail};
    EXPECT_EQ(placed(movie, IndexPlace::front), start + tail + movie.media);
    EXPECT_EQ(placed({.tail = tail}, IndexPlace::end), start + movie.media + tail);
}

TEST_F(IndexPlacerTest, UsesWhatTheWriterLeftInFrontOfTheMedia) {
    const Movie plain;
    for (const std::string& filler : {box("free", ""), box("wide", "")}) {
        const Movie movie{.media = filler + plain.media};
        EXPECT_EQ(placed(movie, IndexPlace::front), start + movie.tail + plain.media);
        EXPECT_EQ(placed(movie, IndexPlace::end), start + filler + plain.media + movie.tail);
    }
    const Movie roomy{.room = plain.tail.size() + 100, .media = box("free", "") + plain.media};
    EXPECT_EQ(placed(roomy, IndexPlace::front), start + roomy.tail + freeBox(108) + plain.media);
}

TEST_F(IndexPlacerTest, WritesWhatIsLeftOfTheMedia) {
    const std::string whole = box("mdat", "media");
    const std::string index = box("moov", "");
    const Movie movie{.media = whole.substr(0, 10), .tail = whole.substr(10) + index};
    EXPECT_EQ(placed(movie, IndexPlace::end), start + whole + index);
    EXPECT_EQ(placed(movie, IndexPlace::front), start + index + whole);
}

TEST_F(IndexPlacerTest, TellsOfSamplesThatWereGathered) {
    const auto indexWith = [](std::uint64_t samples, std::uint64_t duration,
                              const std::string& sizes) {
        const std::string number = u32(0) + u32(0) + u32(1);
        return box(
            "moov",
            box("trak",
                fullBox("tkhd", 0, number) +
                    box("mdia",
                        box("minf",
                            box("stbl",
                                fullBox("stts", 0, u32(1) + u32(samples) + u32(duration)) +
                                    fullBox("stsc", 0, u32(1) + u32(1) + u32(samples) + u32(1)) +
                                    fullBox("stsz", 0, sizes))))));
    };
    Movie movie{.tail = indexWith(1, 200, u32(5) + u32(1))};
    movie.gathered[1] = {{{2, 100}}, {2, 3}};
    const std::string told = indexWith(2, 100, u32(0) + u32(2) + u32(2) + u32(3));
    EXPECT_EQ(placed(movie, IndexPlace::end), start + movie.media + told);
    EXPECT_EQ(placed(movie, IndexPlace::front), start + told + movie.media);
    movie.gathered[1].runs[0].duration = 300;
    EXPECT_THROW(placed(movie, IndexPlace::end), Error);
}

TEST_F(IndexPlacerTest, NeedsMediaAndAnIndex) {
    const std::string index = box("moov", "");
    for (const IndexPlace place : {IndexPlace::end, IndexPlace::front}) {
        EXPECT_THROW(placed({.tail = ""}, place), Error);
        EXPECT_THROW(placed({.tail = "garbage that is no box"}, place), Error);
        EXPECT_THROW(placed({.tail = index + "more"}, place), Error);
        EXPECT_THROW(placed({.media = box("junk", "media"), .tail = index}, place), Error);
        EXPECT_THROW(placed({.media = "short", .tail = index}, place), Error);
        EXPECT_THROW(placed({.media = box("mdat", "media").substr(0, 9), .tail = "x"}, place),
                     Error);
    }
}

} // namespace boxlift::media
