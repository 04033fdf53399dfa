#include "engine/media/chunk_places.h"

#include <gtest/gtest.h>

#include "engine/media/box_writer.h"

namespace boxlift::media {

namespace {

using test::box;
using test::fullBox;
using test::u32;
using test::u64;

std::string track(const std::string& table) {
    return box("trak", box("mdia", box("minf", box("stbl", table))));
}

std::string changed(const std::string& index, void (*change)(box_bytes::Bytes&, std::uint64_t),
                    std::uint64_t by) {
    box_bytes::Bytes bytes(index.begin(), index.end());
    change(bytes, by);
    return {bytes.begin(), bytes.end()};
}

} // namespace

TEST(ChunkPlaces, MoveInEveryTrack) {
    const auto index = [](std::uint64_t by) {
        return box("moov", track(fullBox("stco", 0, u32(2) + u32(5 + by) + u32(9 + by))) +
                               box("udta", "else") +
                               track(fullBox("co64", 0, u32(1) + u64((1ULL << 40) + by))));
    };
    EXPECT_EQ(changed(index(0), chunk_places::move, 1000), index(1000));
}

TEST(ChunkPlaces, AreWidenedOnlyWhereTheyMustBe) {
    const std::string low = track(fullBox("stco", 0, u32(1) + u32(100)));
    const std::string high = track(fullBox("stco", 0, u32(2) + u32(100) + u32(101)));
    const std::string wide = track(fullBox("co64", 0, u32(2) + u64(100) + u64(101)));
    EXPECT_EQ(changed(box("moov", low + high), chunk_places::widen, 100), box("moov", low + wide));
}

TEST(ChunkPlaces, AreLeftAloneInTablesThatAreCutOff) {
    for (const std::string& table : {fullBox("stco", 0, u32(2) + u32(100)), box("stco", "12"),
                                     fullBox("stco", 0, u32(0xffffffff)), box("none", "")}) {
        const std::string index = box("moov", track(table) + box("trak", ""));
        EXPECT_EQ(changed(index, chunk_places::move, 7), index);
        EXPECT_EQ(changed(index, chunk_places::widen, 0), index);
    }
}

} // namespace boxlift::media
