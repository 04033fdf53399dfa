#include "engine/media/aac_file_writer.h"

#include <chrono>
#include <csignal>
#include <random>
#include <thread>

#include <sys/resource.h>
#include <unistd.h>

#include "engine/media/aac_writer_fixture.h"

namespace boxlift::media {

namespace {

using namespace std::chrono_literals;
using Status = AssetWriter::Status;
using test::aac128;
using test::makeBuffer;
using test::sine;

/// Lowers the size that files may have, so that writing fails as on a full disk.
class SmallFiles {
public:
    explicit SmallFiles(rlim_t bytes) {
        m_handler = std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit small{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
    }
    ~SmallFiles() {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }
    SmallFiles(const SmallFiles&) = delete;
    SmallFiles& operator=(const SmallFiles&) = delete;

private:
    rlimit m_before{};
    void (*m_handler)(int) = nullptr;
};

/// How it ends otherwise than well, and what is left then.
class AacFileWriterEndTest : public test::AacWriterTest {};

TEST_F(AacFileWriterEndTest, FailsWhenNoSamplesCame) {
    {
        AacFileWriter writer(path());
        ASSERT_TRUE(start(writer));
        writer.finishWriting();
        EXPECT_EQ(writer.status(), Status::failed);
        EXPECT_EQ(test::errorKind(writer.error()), ErrorKind::cannotEncode);
    }
    EXPECT_TRUE(isFolderEmpty());
}

TEST_F(AacFileWriterEndTest, CannotStartInAFolderThatIsNotThere) {
    AacFileWriter writer(folder() / "missing" / "out.m4a");
    EXPECT_FALSE(start(writer));
    EXPECT_EQ(writer.status(), Status::failed);
    EXPECT_EQ(test::errorKind(writer.error()), ErrorKind::notPermitted);
}

TEST_F(AacFileWriterEndTest, CannotStartInAReadOnlyFolder) {
    if (::geteuid() == 0)
        GTEST_SKIP() << "the superuser may write everywhere";
    std::filesystem::permissions(folder(), std::filesystem::perms::owner_read |
                                               std::filesystem::perms::owner_exec);
    AacFileWriter writer(path());
    EXPECT_FALSE(start(writer));
    EXPECT_EQ(test::errorKind(writer.error()), ErrorKind::notPermitted);
    std::filesystem::permissions(folder(), std::filesystem::perms::owner_all);
    EXPECT_TRUE(isFolderEmpty());
}

TEST_F(AacFileWriterEndTest, ReportsAFullDiskWhenItFinishes) {
    const SmallFiles limit(20'000);
    {
        AacFileWriter writer(path());
        ASSERT_TRUE(start(writer));
        append(writer, 5 * 44100, sine);
        writer.finishWriting();
        EXPECT_EQ(writer.status(), Status::failed);
        EXPECT_EQ(test::errorKind(writer.error()), ErrorKind::noSpace);
    }
    EXPECT_TRUE(isFolderEmpty());
}

TEST_F(AacFileWriterEndTest, DropsBuffersAfterTheDiskHasFilledUp) {
    const SmallFiles limit(20'000);
    {
        AacFileWriter writer(path());
        ASSERT_TRUE(start(writer, {44100, 2, 320'000}));
        std::minstd_rand engine(1);
        SampleBuffer noise = makeBuffer(0, 8192, [&](std::size_t) {
            return std::uniform_real_distribution<double>(-0.5, 0.5)(engine);
        });
        // The first write reaches the disk after a mebibyte, half a minute of sound.
        for (int i = 0; i < 600 && writer.status() == Status::writing; ++i)
            writer.append(noise);
        EXPECT_EQ(writer.status(), Status::failed);
        EXPECT_EQ(test::errorKind(writer.error()), ErrorKind::noSpace);
        EXPECT_TRUE(writer.isReadyForMoreMediaData());
        EXPECT_FALSE(writer.append(noise));
        writer.finishWriting();
        EXPECT_EQ(writer.status(), Status::failed);
    }
    EXPECT_TRUE(isFolderEmpty());
}

TEST_F(AacFileWriterEndTest, LeavesAFileAloneThatHasTakenTheNameMeanwhile) {
    {
        AacFileWriter writer(path());
        ASSERT_TRUE(start(writer));
        append(writer, 44100, sine);
        test::writeFile(path(), "somebody else's");
        writer.finishWriting();
        EXPECT_EQ(writer.status(), Status::failed);
        EXPECT_EQ(test::errorKind(writer.error()), ErrorKind::nameTaken);
    }
    EXPECT_EQ(test::readFile(path()), "somebody else's");
    std::filesystem::remove(path());
    EXPECT_TRUE(isFolderEmpty());
}

TEST_F(AacFileWriterEndTest, ShowsNothingUnderTheNameBeforeItIsFinished) {
    AacFileWriter writer(path());
    ASSERT_TRUE(start(writer));
    append(writer, 44100, sine);
    EXPECT_FALSE(std::filesystem::exists(path()));
    writer.finishWriting();
    EXPECT_TRUE(std::filesystem::exists(path()));
}

TEST_F(AacFileWriterEndTest, LeavesNothingWhenItIsCancelled) {
    {
        AacFileWriter writer(path());
        ASSERT_TRUE(start(writer));
        append(writer, 44100, sine);
        writer.cancelWriting();
        EXPECT_EQ(writer.status(), Status::cancelled);
        EXPECT_EQ(writer.error(), nullptr);
        EXPECT_FALSE(writer.append(makeBuffer(0, 100, sine)));
        writer.finishWriting();
        EXPECT_EQ(writer.status(), Status::cancelled);
    }
    EXPECT_TRUE(isFolderEmpty());
}

TEST_F(AacFileWriterEndTest, LetsAnAppendGoThatWaitsWhenItIsCancelled) {
    AacFileWriter writer(path());
    ASSERT_TRUE(start(writer));
    std::jthread canceller([&] {
        std::this_thread::sleep_for(50ms);
        writer.cancelWriting();
    });
    const SampleBuffer buffer = makeBuffer(0, 44100, sine);
    const auto begin = std::chrono::steady_clock::now();
    while (writer.append(buffer))
        ASSERT_LT(std::chrono::steady_clock::now() - begin, 20s);
    EXPECT_EQ(writer.status(), Status::cancelled);
}

TEST_F(AacFileWriterEndTest, LeavesNothingWhenItIsDroppedUnfinished) {
    {
        AacFileWriter writer(path());
        ASSERT_TRUE(start(writer));
        append(writer, 44100, sine);
    }
    EXPECT_TRUE(isFolderEmpty());
}

TEST_F(AacFileWriterEndTest, EndsCompletedOrCancelledButNeverBetween) {
    for (int delay = 0; delay < 20; ++delay) {
        Status status = Status::unknown;
        {
            AacFileWriter writer(path());
            ASSERT_TRUE(start(writer));
            append(writer, 20'000, sine);
            std::jthread canceller([&] {
                std::this_thread::sleep_for(std::chrono::milliseconds(delay));
                writer.cancelWriting();
            });
            writer.finishWriting();
            status = writer.status();
        }
        ASSERT_TRUE(status == Status::completed || status == Status::cancelled);
        ASSERT_EQ(std::filesystem::exists(path()), status == Status::completed) << delay;
        std::filesystem::remove(path());
    }
}

TEST_F(AacFileWriterEndTest, StaysCompletedWhenItIsCancelledAfterwards) {
    AacFileWriter writer(path());
    ASSERT_TRUE(start(writer));
    append(writer, 44100, sine);
    writer.finishWriting();
    writer.cancelWriting();
    EXPECT_EQ(writer.status(), Status::completed);
    EXPECT_TRUE(std::filesystem::exists(path()));
}

TEST_F(AacFileWriterEndTest, IsCancelledSoonWhileSeveralThreadsEncode) {
    const Time duration = Time::fromSeconds(145);
    const StretchPlan plan = planStretches(duration, 44100, 2);
    constexpr std::int64_t frames = 110 * 44100;
    ASSERT_EQ(plan.workers, 2);
    ASSERT_LT(plan.first + 20 * 44100, frames);
    AacFileWriter writer(path(), 2);
    writer.setOverallDurationHint(duration);
    ASSERT_TRUE(start(writer));
    appendSine(writer, frames);
    // Time for the other thread to begin with the second stretch, while the first goes on.
    EXPECT_FALSE(writer.waitUntilEncoded(100ms));
    EXPECT_LT(writer.encodedTime(), Time::fromRate(plan.first, 44100));
    const auto begin = std::chrono::steady_clock::now();
    writer.cancelWriting();
    writer.finishWriting();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 500ms);
    EXPECT_EQ(writer.status(), Status::cancelled);
}

} // namespace

} // namespace boxlift::media
