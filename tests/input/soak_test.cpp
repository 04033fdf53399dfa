#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <span>
#include <stop_token>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <malloc.h>
#include <unistd.h>

#include "input/conversion_runner.h"
#include "input/engine_under_test.h"
#include "input/sources.h"
#include "support/temp_folder.h"

namespace boxlift::test {

namespace fs = std::filesystem;

namespace {

using std::chrono_literals::operator""ms;
using std::chrono_literals::operator""s;

/// What this process has taken of the system.
struct Holding {
    std::ptrdiff_t descriptors = 0;
    std::ptrdiff_t threads = 0;
    /// KiB.
    long resident = 0;
    /// Of the heap, by those who have not given it back. Bytes.
    std::size_t inUse = 0;

    static Holding now() {
        const auto countIn = [](const char* folder) {
            return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
        };
        long total = 0;
        long resident = 0;
        std::ifstream("/proc/self/statm") >> total >> resident;
        return {.descriptors = countIn("/proc/self/fd"),
                .threads = countIn("/proc/self/task"),
                .resident = resident * (::sysconf(_SC_PAGESIZE) / 1024),
                .inUse = ::mallinfo2().uordblks};
    }

    friend std::ostream& operator<<(std::ostream& out, const Holding& holding) {
        return out << holding.descriptors << " descriptors, " << holding.threads << " threads, "
                   << holding.resident << " KiB, of the heap " << holding.inUse / 1024
                   << " KiB in use";
    }
};

/// Whether no more is held than was; a worker that is being started or ended settles soon.
bool settlesAt(const Holding& before) {
    const auto deadline = std::chrono::steady_clock::now() + 15s;
    while (std::chrono::steady_clock::now() < deadline) {
        const Holding now = Holding::now();
        if (now.descriptors <= before.descriptors && now.threads <= before.threads)
            return true;
        std::this_thread::sleep_for(10ms);
    }
    return false;
}

/// KiB resident.
long medianOf(std::span<const Holding> holdings) {
    std::vector<long> sizes;
    for (const Holding& holding : holdings)
        sizes.push_back(holding.resident);
    const auto middle = sizes.begin() + std::ssize(sizes) / 2;
    std::ranges::nth_element(sizes, middle);
    return *middle;
}

} // namespace

/// Conversions of every way and every end, one after the other.
class Soak : public testing::Test {
protected:
    void convertTo(Target target, Mode mode, bool removesAudio = false) {
        ConversionRequest request = m_film;
        request.target = target;
        request.removeAudio = removesAudio;
        expectMode(request, mode);
    }

    void encode() {
        ConversionRequest request = m_film;
        request.size = SizeOption::p720;
        expectMode(request, Mode::reencode);
    }

    void transcode() { expectMode(m_song, Mode::reencode); }

    void fail(const ConversionRequest& request) const {
        const Conversion done = run(request);
        EXPECT_FALSE(done.mode);
        EXPECT_NE(done.sentence, "");
    }

    void cancel(ConversionRequest request, SizeOption size) const {
        request.size = size;
        std::stop_source stop;
        const Conversion done = run(
            request, [&](double) { stop.request_stop(); }, stop.get_token());
        // Or it had ended before it was told.
        EXPECT_TRUE(done.wasCancelled || done.mode);
        fs::remove(request.output);
    }

    void doOne(std::size_t number) {
        switch (number % 10) {
        case 0:
            return convertTo(Target::mp4, Mode::boxlift);
        case 1:
            return convertTo(Target::mov, Mode::boxlift);
        case 2:
            return convertTo(Target::m4a, Mode::boxlift);
        case 3:
            return convertTo(Target::mp4, Mode::boxlift, true);
        case 4:
            return transcode();
        case 5:
            return encode();
        case 6:
            return fail(m_missing);
        case 7:
            return fail(m_cut);
        case 8:
            return cancel(m_film, SizeOption::original);
        default:
            return cancel(m_film, SizeOption::p720);
        }
    }

    fs::path make(const char* name, MediaSpec spec) const {
        if (!spec.video.empty()) {
            spec.video.front().width = 64;
            spec.video.front().height = 48;
            spec.muxerOptions = {{"movflags", "faststart"}};
        }
        return makeSource(m_folder.path(), name, spec);
    }

    ConversionRequest requestOf(const fs::path& source, Target target) const {
        return requestFor(source, target, m_out / "out");
    }

    ConversionRequest cutRequest() const {
        const fs::path source = make("cut.mov", h264AndAac(3));
        const ConversionRequest request = requestOf(source, Target::mp4);
        fs::resize_file(source, fs::file_size(source) / 2);
        return request;
    }

    ConversionRequest missingRequest() const {
        ConversionRequest request = m_film;
        request.source = m_folder.path() / "missing.mov";
        return request;
    }

    const TempFolder m_folder;
    const fs::path m_out = makeOutputFolder(m_folder.path());
    const ConversionRequest m_film = requestOf(make("film.mov", h264AndAac(0.4)), Target::mp4);
    const ConversionRequest m_song = requestOf(
        make("song.wav", {.format = "wav", .seconds = 0.4, .audio = {{.codec = "pcm_s16le"}}}),
        Target::aac);
    const ConversionRequest m_cut = cutRequest();
    const ConversionRequest m_missing = missingRequest();

private:
    Conversion run(
        const ConversionRequest& request, const Converter::Progress& progress = [](double) {},
        std::stop_token stop = {}) const {
        Conversion done;
        try {
            done.mode =
                m_engine.convert(request.source, request.info, request.target, request.size,
                                 request.removeAudio, request.output, progress, std::move(stop));
        } catch (const Cancelled&) {
            done.wasCancelled = true;
        } catch (const std::exception& error) {
            done.sentence = error.what();
        }
        return done;
    }

    void expectMode(const ConversionRequest& request, Mode mode) const {
        const Conversion done = run(request);
        EXPECT_EQ(done.mode, mode) << done.sentence;
        EXPECT_TRUE(fs::remove(request.output));
    }

    /// One for all, as in the application.
    const Engine m_engine = engineUnderTest();
};

// With BOXLIFT_LARGE a thousand. Where the engine is in this process, the allocator and the stacks
// of threads that have ended keep now more, now less; what is in use tells.
TEST_F(Soak, ManyConversionsLeaveNothingBehind) {
    const bool isLong = std::getenv("BOXLIFT_LARGE") != nullptr;
#ifdef BOXLIFT_WORKER
    if (!isLong)
        GTEST_SKIP() << "BOXLIFT_LARGE is not set: a process for each takes long";
#endif
    const std::size_t count = isLong ? 1000 : 300;
    std::vector<Holding> after;
    after.reserve(count);
    while (after.size() < count && !HasFailure()) {
        SCOPED_TRACE(after.size());
        doOne(after.size());
        after.push_back(Holding::now());
        if (after.size() % 100 == 0)
            std::cout << after.size() << ": " << after.back() << ", "
                      << medianOf(std::span(after).last(100)) << " KiB as a rule\n";
    }
    ASSERT_EQ(after.size(), count);
    EXPECT_TRUE(settlesAt(after[99]))
        << Holding::now() << "; after the first hundred " << after[99];
    EXPECT_LE(after.back().inUse, after[99].inUse + after[99].inUse / 20);
#ifdef BOXLIFT_WORKER
    const long early = medianOf(std::span(after).subspan(100, 100));
    EXPECT_LE(medianOf(std::span(after).last(100)), early + early / 20);
#endif
    EXPECT_EQ(namesIn(m_out), std::vector<std::string>());
}

} // namespace boxlift::test
