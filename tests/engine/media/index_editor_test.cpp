#include "engine/media/index_editor.h"

#include <gtest/gtest.h>

#include "engine/media/box_writer.h"
#include "engine/media/metadata_boxes.h"

namespace boxlift::media {

namespace {

using box_bytes::Bytes;
using test::bigEndian;
using test::box;
using test::fullBox;
using test::u32;
using test::u64;

/// Movies count 1000 ticks a second here.
std::string movieHeader(std::uint64_t length) {
    return fullBox("mvhd", 0, u32(0) + u32(0) + u32(1000) + u32(length) + std::string(80, '\0'));
}

std::string trackHeader(int id, std::uint64_t length, int version = 0) {
    const std::string number = u32(static_cast<std::uint64_t>(id)) + u32(0);
    return version == 0
               ? fullBox("tkhd", 0, u32(0) + u32(0) + number + u32(length) + std::string(60, '\0'))
               : fullBox("tkhd", 1, u64(0) + u64(0) + number + u64(length) + std::string(60, '\0'));
}

/// An empty edit, and one that shows media.
std::string edits(std::uint64_t gap, std::uint64_t length, int version = 0) {
    const auto number = [version](std::uint64_t value) {
        return version == 0 ? u32(value) : u64(value);
    };
    return box("edts", fullBox("elst", version,
                               u32(2) + number(gap) + number(~std::uint64_t{0}) + u32(0x10000) +
                                   number(length) + number(0) + u32(0x10000)));
}

std::string media(std::uint64_t language, const std::string& entry = {}) {
    const std::string description = fullBox("stsd", 0, u32(1) + entry);
    return box(
        "mdia",
        fullBox("mdhd", 0, std::string(16, '\0') + bigEndian(language, 2) + std::string(2, '\0')) +
            box("minf", box("stbl", description + box("stts", "after it"))));
}

std::string track(int id, const std::string& more) {
    return box("trak", trackHeader(id, 4000) + more);
}

std::string movie(const std::string& tracks) {
    return box("moov", movieHeader(4000) + tracks);
}

std::string edited(const std::string& index, const IndexChanges& changes) {
    const Bytes result = editedIndex(Bytes(index.begin(), index.end()), changes);
    return {result.begin(), result.end()};
}

Bytes bytesOf(const std::string& text) {
    return {text.begin(), text.end()};
}

IndexChanges endingAt(double seconds, std::uint32_t id = 1) {
    IndexChanges changes;
    changes.tracks.push_back({id, Time::fromSeconds(seconds), "", 0, {}});
    return changes;
}

IndexChanges speaking(const char* language) {
    IndexChanges changes;
    changes.tracks.push_back({1, {}, language, 0, {}});
    return changes;
}

constexpr std::uint64_t noLanguage = 0x7fff;

} // namespace

TEST(IndexEditor, EndsATrackAndItsMovieWhereTheyAreShownTo) {
    const std::string index = movie(track(1, edits(500, 3500)));
    EXPECT_EQ(
        edited(index, endingAt(3)),
        box("moov", movieHeader(3000) + box("trak", trackHeader(1, 3000) + edits(500, 2500))));
}

TEST(IndexEditor, KnowsNumbersOf64Bits) {
    const std::string index =
        box("moov", movieHeader(4000) + box("trak", trackHeader(1, 4000, 1) + edits(0, 4000, 1)));
    EXPECT_EQ(
        edited(index, endingAt(3)),
        box("moov", movieHeader(3000) + box("trak", trackHeader(1, 3000, 1) + edits(0, 3000, 1))));
}

TEST(IndexEditor, LeavesAMovieAsLongAsItsLongestTrack) {
    const std::string index = movie(track(1, edits(0, 4000)) + track(2, edits(0, 4000)));
    EXPECT_EQ(edited(index, endingAt(3, 2)),
              movie(track(1, edits(0, 4000)) + box("trak", trackHeader(2, 3000) + edits(0, 3000))));
}

TEST(IndexEditor, LengthensNothingAndTakesNoEditAway) {
    const std::string index = movie(track(1, edits(2000, 2000)));
    EXPECT_EQ(edited(index, endingAt(5)), index);
    EXPECT_EQ(edited(index, endingAt(2)), index);
    EXPECT_EQ(edited(index, endingAt(1)), index);
    EXPECT_EQ(edited(index, endingAt(0)), index);
    EXPECT_EQ(edited(index, endingAt(3, 7)), index);
}

TEST(IndexEditor, NamesALanguageThatHadNoNumber) {
    // Five bits a letter, from 1 on: d e u.
    EXPECT_EQ(edited(movie(track(1, media(noLanguage))), speaking("deu")),
              movie(track(1, media(4 << 10 | 5 << 5 | 21))));
}

TEST(IndexEditor, LeavesALanguageThatIsTold) {
    EXPECT_EQ(edited(movie(track(1, media(2))), speaking("deu")), movie(track(1, media(2))));
}

TEST(IndexEditor, WritesNoLanguageThatIsNone) {
    for (const char* language : {"", "de", "DEU", "d-u", "deutsch"})
        EXPECT_EQ(edited(movie(track(1, media(noLanguage))), speaking(language)),
                  movie(track(1, media(noLanguage))));
}

TEST(IndexEditor, ExtendsASampleEntryOfTheRightTrack) {
    const std::string entry(78, 'x');
    const std::string added = box("dvvC", "word");
    IndexChanges changes;
    changes.tracks.push_back({2, {}, "", 0, bytesOf(added)});
    const std::string before = track(1, media(0, box("hvc1", entry)));
    EXPECT_EQ(edited(movie(before + track(2, media(0, box("hvc1", entry)))), changes),
              movie(before + track(2, media(0, box("hvc1", entry + added)))));
}

TEST(IndexEditor, RenamesASampleEntry) {
    IndexChanges changes;
    changes.tracks.push_back({1, {}, "", fourCharCode("dvh1"), {}});
    EXPECT_EQ(edited(movie(track(1, media(0, box("hvc1", "entry")))), changes),
              movie(track(1, media(0, box("dvh1", "entry")))));
}

TEST(IndexEditor, AddsNoBoxTwiceToASampleEntry) {
    const std::string added = box("dvvC", "word");
    IndexChanges changes;
    changes.tracks.push_back({1, {}, "", 0, bytesOf(added)});
    const std::string index = movie(track(1, media(0, box("hvc1", std::string(78, 'x') + added))));
    EXPECT_EQ(edited(index, changes), index);
}

TEST(IndexEditor, AddsWhatIsMissingOfSeveralBoxesToASampleEntry) {
    const std::string here = box("st3d", "word");
    const std::string added = box("sv3d", "more");
    IndexChanges changes;
    changes.tracks.push_back({1, {}, "", 0, bytesOf(here + added)});
    const std::string fields(78, 'x');
    EXPECT_EQ(edited(movie(track(1, media(0, box("avc1", fields + here)))), changes),
              movie(track(1, media(0, box("avc1", fields + here + added)))));
}

TEST(IndexEditor, AddsItemsToTheListOfItems) {
    const auto listed = [](const std::string& items) {
        return movie(box("udta", fullBox("meta", 0, box("hdlr", "words") + box("ilst", items)) +
                                     box("loci", "place")));
    };
    IndexChanges changes;
    changes.items = bytesOf(box("soar", "more"));
    EXPECT_EQ(edited(listed(box("name", "one")), changes),
              listed(box("name", "one") + box("soar", "more")));
}

TEST(IndexEditor, MakesAListWhereThereIsNone) {
    IndexChanges changes;
    changes.items = bytesOf(box("soar", "more"));
    changes.movie = bytesOf(box("meta", "keys"));
    const Bytes made = metadata_boxes::itemList(changes.items);
    const std::string list(made.begin(), made.end());
    EXPECT_EQ(edited(movie(box("udta", box("name", "words"))), changes),
              movie(box("udta", box("name", "words") + list) + box("meta", "keys")));
    const std::string bare = movie(track(1, ""));
    EXPECT_EQ(edited(bare, changes), movie(track(1, "") + box("udta", list) + box("meta", "keys")));
    EXPECT_EQ(edited(bare, changes).size(), bare.size() + changes.largestGrowth());
}

TEST(IndexEditor, SurvivesAnIndexThatIsCutOff) {
    const std::string whole = movie(track(1, edits(500, 3500) + media(noLanguage)));
    IndexChanges changes = endingAt(3);
    changes.tracks[0].language = "deu";
    changes.tracks[0].sampleEntry = bytesOf(box("dvvC", "word"));
    changes.items = bytesOf(box("soar", "more"));
    for (std::size_t size = 0; size < whole.size(); ++size)
        EXPECT_GE(edited(whole.substr(0, size), changes).size(), size);
}

} // namespace boxlift::media
