#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <fstream>

#include <gtest/gtest.h>

#include "engine/media/box_writer.h"
#include "input/conversion_runner.h"
#include "input/sources.h"
#include "support/media_boxes.h"
#include "support/media_decode.h"
#include "support/media_measure.h"
#include "support/media_probe.h"
#include "support/temp_folder.h"

namespace boxlift::test {

namespace fs = std::filesystem;

namespace {

using media::test::box;
using media::test::u32;
using media::test::u64;

std::uint64_t numberAt(std::string_view bytes, std::size_t at) {
    std::uint64_t value = 0;
    for (const char byte : bytes.substr(at, 4))
        value = value << 8 | static_cast<unsigned char>(byte);
    return value;
}

/// The chunks' places in 64 bits, moved by `shift`. They are the last of a track's tables.
std::string withLongOffsets(std::string_view tables, std::uint64_t shift) {
    const std::size_t start = tables.find("stco") - 4;
    EXPECT_EQ(start + numberAt(tables, start), tables.size());
    const std::uint64_t count = numberAt(tables, start + 12);
    std::string offsets = u32(0) + u32(count);
    for (std::size_t i = 0; i < count; ++i)
        offsets += u64(numberAt(tables, start + 16 + 4 * i) + shift);
    return std::string(tables.substr(0, start)) + box("co64", offsets);
}

/// Moves the media of a movie of one track, whose index is at the end, behind a hole of this size.
void insertHole(const fs::path& path, std::uint64_t size) {
    const std::string contents = readFile(path);
    const auto boxes = topLevelBoxes(path);
    ASSERT_EQ(boxes.front().type, "ftyp");
    ASSERT_EQ(boxes.back().type, "moov");
    const std::string start = contents.substr(0, boxes.front().size);
    const auto index = static_cast<std::size_t>(boxes.back().offset);
    constexpr std::array<std::string_view, 5> tables{"moov", "trak", "mdia", "minf", "stbl"};
    const std::string moved =
        media::test::editBox(contents.substr(index), tables,
                             [&](std::string_view box) { return withLongOffsets(box, size); });
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << start << u32(1) << "free" << u64(size);
    file.seekp(static_cast<std::streamoff>(start.size() + size));
    file << contents.substr(start.size(), index - start.size()) << moved;
}

/// Tables of one chunk at `start`, of `count` samples of `size` bytes each.
std::string withLargeSamples(std::string_view tables, std::uint64_t start, std::uint64_t size,
                             std::uint64_t count) {
    constexpr std::array<std::string_view, 1> sizes{"stsz"};
    constexpr std::array<std::string_view, 1> chunks{"stsc"};
    std::string edited = media::test::editBox(
        tables, sizes, [&](std::string_view) { return u32(0) + u32(size) + u32(count); });
    edited = media::test::editBox(edited, chunks, [&](std::string_view) {
        return u32(0) + u32(1) + u32(1) + u32(count) + u32(1);
    });
    return edited.substr(0, edited.find("stco") - 4) + box("co64", u32(0) + u32(1) + u64(start));
}

/// Makes each H.264 picture of a movie of one track, whose index is at the end, `size` bytes of a
/// hole.
void inflate(const fs::path& path, std::uint64_t size, std::uint64_t count) {
    const std::string contents = readFile(path);
    const auto boxes = topLevelBoxes(path);
    ASSERT_EQ(boxes.back().type, "moov");
    const std::string start = contents.substr(0, boxes.front().size);
    const std::uint64_t media = start.size() + 16;
    constexpr std::array<std::string_view, 5> tables{"moov", "trak", "mdia", "minf", "stbl"};
    const std::string index = media::test::editBox(
        contents.substr(boxes.back().offset), tables,
        [&](std::string_view box) { return withLargeSamples(box, media, size, count); });
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << start << u32(1) << "mdat" << u64(16 + size * count);
    // Each is a key frame's unit, with a number so that it does not pass for another one.
    for (std::uint64_t i = 0; i < count; ++i)
        file.seekp(static_cast<std::streamoff>(media + i * size))
            << u32(size - 4) << '\x65' << u64(i);
    file.seekp(static_cast<std::streamoff>(media + size * count)) << index;
}

} // namespace

// Writes 10 GB, so only where that is asked for.
TEST(LongFile, IsCopiedIntoOneOfMoreThanFourGibibytes) {
    if (!std::getenv("BOXLIFT_LARGE"))
        GTEST_SKIP() << "BOXLIFT_LARGE is not set";
    constexpr std::uint64_t pictureSize = 16'000'000;
    constexpr std::uint64_t pictures = 300;
    const TempFolder folder;
    MediaSpec spec{.format = "mov", .seconds = 12, .video = {{}}};
    const fs::path source = makeSource(folder.path(), "source.mov", spec);
    ASSERT_NO_FATAL_FAILURE(inflate(source, pictureSize, pictures));
    const auto before = probe(source).video().payloadHashes();
    ASSERT_EQ(before.size(), pictures);
    const fs::path output = makeOutputFolder(folder.path()) / "out";
    for (const Target target : {Target::mp4, Target::mov}) {
        const auto done = convert(requestFor(source, target, output), {}, std::chrono::minutes(5));
        EXPECT_EQ(done.mode, Mode::boxlift) << done.sentence;
        EXPECT_GT(fs::file_size(output), pictureSize * pictures);
        const ProbedFile copy = probe(output);
        EXPECT_EQ(copy.video().payloadHashes(), before);
        EXPECT_NEAR(copy.durationSeconds.value(), 12, 0.01);
        fs::remove(output);
    }
}

TEST(LongFile, IsConvertedWhenItsMediaLiesBehindFourGibibytes) {
    constexpr std::uint64_t hole = 5'000'000'000;
    const TempFolder folder;
    const MediaSpec spec{.format = "mov", .video = {{.bFrames = 2}}};
    const fs::path source = makeSource(folder.path(), "source.mov", spec);
    const auto before = probe(source).video().payloadHashes();
    ASSERT_NO_FATAL_FAILURE(insertHole(source, hole));
    ASSERT_GT(fs::file_size(source), hole);
    const fs::path output = makeOutputFolder(folder.path()) / "out";
    for (const Target target : {Target::mp4, Target::mov}) {
        auto request = requestFor(source, target, output);
        EXPECT_NEAR(request.info.duration, 1, 0.01);
        EXPECT_EQ(convert(request).mode, Mode::boxlift);
        EXPECT_EQ(probe(output).video().payloadHashes(), before);
        EXPECT_LT(fs::file_size(output), 1'000'000U);
        request.size = SizeOption::p720;
        EXPECT_EQ(convert(request).mode, Mode::reencode);
        EXPECT_EQ(probe(output).video().packets.size(), before.size());
    }
}

// Small pictures at a rate that fits no clock evenly, and a click near the end.
TEST(LongFile, HasSoundAndPicturesTogetherAfterAnHour) {
    constexpr double hour = 3600;
    constexpr int sampleRate = 8000;
    constexpr std::int64_t click = 3599 * sampleRate + 1234;
    constexpr double tolerance = 0.005;
    const TempFolder folder;
    MediaSpec spec{.format = "mov", .seconds = hour};
    spec.video = {{.width = 64,
                   .height = 48,
                   .frameRate = {1000, 1001},
                   .encoderOptions = {{"preset", "ultrafast"}}}};
    spec.audio = {{.codec = "pcm_s16le",
                   .sampleRate = sampleRate,
                   .layout = "mono",
                   .signal = Signal::impulses,
                   .impulses = {click}}};
    const fs::path source = makeSource(folder.path(), "source.mov", spec);
    const fs::path output = makeOutputFolder(folder.path()) / "out";
    const ProbedFile before = probe(source);
    const auto request = requestFor(source, Target::mp4, output);
    ASSERT_EQ(convert(request).mode, Mode::reencode);
    const ProbedFile after = probe(output);
    ASSERT_EQ(after.video().packets.size(), before.video().packets.size());
    const auto lastPicture = [](const ProbedStream& stream) {
        double last = 0;
        for (const auto& packet : stream.packets)
            last = std::max(last, stream.seconds(packet.pts.value()));
        return last;
    };
    ASSERT_GT(lastPicture(before.video()), hour - 2);
    const double pictureShift = lastPicture(after.video()) - lastPicture(before.video());
    const DecodedAudio sound = decodeAudio(output);
    const double heard =
        sound.startSeconds + static_cast<double>(peakSample(sound)) / sound.sampleRate;
    const double soundShift = heard - static_cast<double>(click) / sampleRate;
    EXPECT_NEAR(soundShift, pictureShift, tolerance);
    EXPECT_NEAR(pictureShift, 0, tolerance);
    EXPECT_NEAR(sound.seconds(), hour, tolerance);
}

} // namespace boxlift::test
