#include "queue/queue.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <random>

#include "queue/queue_fixture.h"
#include "queue/worker_engine.h"
#include "support/media_generator.h"

namespace boxlift {
namespace {

namespace fs = std::filesystem;
using test::readFile;
using test::spinUntil;

/// The queue as the application has it: over workers and real files.
class QueueWorker : public test::QueueFixture {
protected:
    QueueWorker() : QueueFixture(workerEngine({.program = BOXLIFT_WORKER})) {}

    void makeSongs(int count) {
        const fs::path first = input("song 0.wav");
        fs::create_directories(first.parent_path());
        test::makeMedia(first, {.format = "wav", .seconds = 1, .audio = {{.codec = "pcm_s16le"}}});
        for (int i = 1; i < count; ++i)
            fs::copy_file(first, input(songName(i)));
    }
    static std::string songName(int i) { return "song " + std::to_string(i) + ".wav"; }

    int countOf(Job::StateKind state) {
        return static_cast<int>(std::ranges::count_if(
            queue().jobs(), [&](const auto& job) { return job->stateKind() == state; }));
    }

    static std::ptrdiff_t openDescriptors() {
        return std::distance(fs::directory_iterator("/dev/fd"), fs::directory_iterator());
    }
};

} // namespace

TEST_F(QueueWorker, IsStoppedAndStartedAgainFiftyTimes) {
    constexpr int count = 60;
    makeSongs(count);
    for (int i = 0; i < count; ++i)
        add(songName(i));
    ASSERT_TRUE(spinUntilAnalyzed());
    std::mt19937 random(50);
    std::ptrdiff_t descriptors = 0;
    for (int run = 0; run < 50; ++run) {
        queue().startAll();
        const auto stopAt =
            std::chrono::steady_clock::now() + std::chrono::milliseconds(random() % 40);
        ASSERT_TRUE(spinUntil([&] { return std::chrono::steady_clock::now() >= stopAt; }));
        queue().task()->cancel();
        ASSERT_TRUE(spinUntilIdle());
        ASSERT_EQ(countOf(Job::StateKind::Ready) + countOf(Job::StateKind::Done), count);
        if (run == 5)
            descriptors = openDescriptors();
    }
    EXPECT_LE(openDescriptors(), descriptors + 1);
    queue().startAll();
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_EQ(countOf(Job::StateKind::Done), count);
    int outputCount = 0;
    const std::string whole = readFile(output("song 0.m4a"));
    for (const auto& entry : fs::directory_iterator(outputDir())) {
        EXPECT_TRUE(readFile(entry.path()) == whole) << entry.path();
        ++outputCount;
    }
    EXPECT_EQ(outputCount, count);
}

TEST_F(QueueWorker, EndsAndLeavesNothingWhileEverythingIsAtWork) {
    makeSongs(20);
    for (int i = 0; i < 20; ++i)
        add(songName(i));
    ASSERT_TRUE(spinUntil([&] { return countOf(Job::StateKind::Ready) > 0; }));
    queue().startAll();
    ASSERT_TRUE(spinUntil([&] { return countOf(Job::StateKind::Converting) > 0; }));
    endQueue();
    EXPECT_TRUE(fs::is_empty(outputDir()));
}

} // namespace boxlift
