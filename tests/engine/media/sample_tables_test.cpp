#include "engine/media/sample_tables.h"

#include <gtest/gtest.h>

#include "engine/media/box_writer.h"

namespace boxlift::media {

namespace {

using test::box;
using test::fullBox;
using test::u32;

constexpr std::uint32_t ours = 2;

/// Three runs: of three samples, of two and of one.
SampleRuns threeRuns() {
    return {{{3, 1024}, {2, 1024}, {1, 700}}, {10, 11, 12, 13, 14, 15}};
}

std::string track(std::uint32_t id, const std::string& tables) {
    const std::string header = u32(0) + u32(0) + u32(id) + std::string(68, '\0');
    return box("trak", fullBox("tkhd", 0, header) +
                           box("mdia", box("minf", box("stbl", tables) + box("last", "minf"))));
}

struct Tables {
    std::string times = u32(3) + u32(1) + u32(3072) + u32(1) + u32(2048) + u32(1) + u32(700);
    std::string chunks = u32(1) + u32(1) + u32(3) + u32(1);
    std::string sizes = u32(0) + u32(3) + u32(33) + u32(27) + u32(15);
    /// Whole boxes, in the middle.
    std::string others{};

    std::string text() const {
        return fullBox("stsd", 0, "entry") + fullBox("stts", 0, times) + others +
               fullBox("stsc", 0, chunks) + fullBox("stsz", 0, sizes) +
               fullBox("stco", 0, u32(1) + u32(99));
    }
};

std::string movie(const std::string& tables) {
    return box("moov", box("mvhd", "movie") + track(1, Tables().text()) + track(ours, tables) +
                           box("udta", "labels"));
}

struct Expansion {
    bool isDone;
    std::string index;
};

Expansion expand(const Tables& tables, const SampleRuns& samples, std::uint32_t id = ours) {
    const std::string text = movie(tables.text());
    box_bytes::Bytes index(text.begin(), text.end());
    const bool isDone = expandSamples(index, id, samples);
    return {isDone, {index.begin(), index.end()}};
}

/// What becomes of samples in three runs, but for the chunks and what is given.
Tables sixSamples() {
    Tables tables;
    tables.times = u32(2) + u32(5) + u32(1024) + u32(1) + u32(700);
    tables.chunks = u32(1) + u32(1) + u32(6) + u32(1);
    tables.sizes = u32(0) + u32(6) + u32(10) + u32(11) + u32(12) + u32(13) + u32(14) + u32(15);
    return tables;
}

void expectExpansion(const Tables& from, const Tables& to, const SampleRuns& samples) {
    const Expansion expansion = expand(from, samples);
    EXPECT_TRUE(expansion.isDone);
    EXPECT_EQ(expansion.index, movie(to.text()));
}

/// The index as it was.
void expectRefusal(const Tables& tables, const SampleRuns& samples, std::uint32_t id = ours) {
    const Expansion expansion = expand(tables, samples, id);
    EXPECT_FALSE(expansion.isDone);
    EXPECT_EQ(expansion.index, movie(tables.text()));
}

} // namespace

TEST(SampleTables, TellOfEverySample) {
    expectExpansion(Tables(), sixSamples(), threeRuns());
}

TEST(SampleTables, GiveTheRestOfARunToItsLastSample) {
    Tables before;
    before.times = u32(2) + u32(1) + u32(3000) + u32(2) + u32(2048);
    Tables after = sixSamples();
    after.times =
        u32(4) + u32(2) + u32(1024) + u32(1) + u32(952) + u32(2) + u32(1024) + u32(1) + u32(2048);
    expectExpansion(before, after, threeRuns());
}

TEST(SampleTables, CountSamplesInEachChunk) {
    Tables before;
    Tables after = sixSamples();
    before.chunks = u32(1) + u32(1) + u32(1) + u32(1);
    after.chunks =
        u32(3) + u32(1) + u32(3) + u32(1) + u32(2) + u32(2) + u32(1) + u32(3) + u32(1) + u32(1);
    expectExpansion(before, after, threeRuns());
    before.chunks = u32(2) + u32(1) + u32(2) + u32(1) + u32(2) + u32(1) + u32(1);
    after.chunks = u32(2) + u32(1) + u32(5) + u32(1) + u32(2) + u32(1) + u32(1);
    expectExpansion(before, after, threeRuns());
    SampleRuns equal = threeRuns();
    equal.runs = {{2, 1024}, {2, 1024}, {2, 700}};
    before.times = u32(2) + u32(2) + u32(2048) + u32(1) + u32(1400);
    before.chunks = u32(1) + u32(1) + u32(1) + u32(1);
    after.times = u32(2) + u32(4) + u32(1024) + u32(2) + u32(700);
    after.chunks = u32(1) + u32(1) + u32(2) + u32(1);
    expectExpansion(before, after, equal);
    before.chunks = u32(2) + u32(1) + u32(1) + u32(1) + u32(3) + u32(1) + u32(2);
    after.chunks = u32(2) + u32(1) + u32(2) + u32(1) + u32(3) + u32(2) + u32(2);
    expectExpansion(before, after, equal);
}

TEST(SampleTables, CountSamplesInEachGroup) {
    Tables before;
    Tables after = sixSamples();
    const std::string description = fullBox("sgpd", 1, "roll");
    before.others =
        description + fullBox("sbgp", 0, "roll" + u32(2) + u32(1) + u32(1) + u32(2) + u32(0));
    after.others =
        description + fullBox("sbgp", 0, "roll" + u32(2) + u32(3) + u32(1) + u32(3) + u32(0));
    expectExpansion(before, after, threeRuns());
    // With a parameter, and with samples that are in no group.
    before.others = fullBox("sbgp", 1, "rollmore" + u32(1) + u32(2) + u32(1));
    after.others = fullBox("sbgp", 1, "rollmore" + u32(1) + u32(5) + u32(1));
    expectExpansion(before, after, threeRuns());
}

TEST(SampleTables, SayOnceWhatSizeAllHave) {
    SampleRuns equal = threeRuns();
    equal.sizes.assign(6, 77);
    Tables after = sixSamples();
    after.sizes = u32(77) + u32(6);
    expectExpansion(Tables(), after, equal);
}

TEST(SampleTables, AreLeftAloneWhereTheyDoNotFit) {
    SampleRuns more = threeRuns();
    more.runs.push_back({1, 1024});
    expectRefusal(Tables(), more);
    SampleRuns fewer = threeRuns();
    fewer.runs.pop_back();
    expectRefusal(Tables(), fewer);
    SampleRuns longer = threeRuns();
    longer.runs.front().duration = 2000;
    expectRefusal(Tables(), longer);
    expectRefusal(Tables(), {{{3, 1024}, {2, 1024}, {1, 700}}, {}});
    expectRefusal(Tables(), threeRuns(), 3);
    Tables tables;
    tables.chunks = u32(1) + u32(1) + u32(2) + u32(1);
    expectRefusal(tables, threeRuns());
    tables.chunks = u32(1) + u32(1) + u32(0) + u32(1);
    expectRefusal(tables, threeRuns());
    tables = Tables();
    tables.others = fullBox("sbgp", 0, "roll" + u32(1) + u32(4) + u32(1));
    expectRefusal(tables, threeRuns());
}

TEST(SampleTables, AreLeftAloneWhereTheyAreCutOff) {
    for (std::string Tables::*table : {&Tables::times, &Tables::chunks})
        for (const std::string& wrong : {std::string(), u32(0xffffffff), u32(1) + "short"}) {
            Tables tables;
            tables.*table = wrong;
            expectRefusal(tables, threeRuns());
        }
    Tables tables;
    tables.others = box("sbgp", "1");
    expectRefusal(tables, threeRuns());
}

TEST(SampleTables, AreLeftAloneBesideOthers) {
    for (const char* other : {"stss", "ctts", "sdtp", "what"}) {
        Tables tables;
        tables.others = fullBox(other, 0, u32(0));
        expectRefusal(tables, threeRuns());
    }
}

TEST(SampleTables, MustAllBeThere) {
    for (const std::string& missing :
         {std::string("stts"), std::string("stsc"), std::string("stsz")}) {
        std::string text = movie(Tables().text());
        // That of the second track.
        text.replace(text.rfind(missing), 4, "sgpd");
        box_bytes::Bytes index(text.begin(), text.end());
        EXPECT_FALSE(expandSamples(index, ours, threeRuns())) << missing;
        EXPECT_EQ(std::string(index.begin(), index.end()), text);
    }
}

} // namespace boxlift::media
