#include "engine/media/reencode_pipeline.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>

#include "engine/media/reencoder.h"
#include "engine/media/source_fixture.h"
#include "support/media_probe.h"

namespace boxlift::media {

namespace {

using namespace std::chrono_literals;
using boxlift::test::MediaSpec;
using Status = ExportSession::Status;
using Clock = std::chrono::steady_clock;

/// A stop is answered within a tenth of a second; the rest is for slow test machines.
constexpr auto patience = 3s;

class ReencodePipelineTest : public test::SourceTest {
protected:
    void SetUp() override {
        MediaSpec spec;
        spec.seconds = 4;
        spec.video = {{.width = 480,
                       .height = 360,
                       .bFrames = 2,
                       .encoderOptions = {{"preset", "ultrafast"}}}};
        spec.audio = {{}, {.layout = "mono"}};
        if (!make(spec))
            GTEST_SKIP() << missing();
    }
    std::unique_ptr<ExportSession> session() {
        return test::makeSession(*test::openAsset(source()), output(), {.optimize = true});
    }
    /// Cancels when the progress has come so far (or the export has ended).
    void cancelAt(ExportSession& session, float fraction) {
        session.exportAsynchronously();
        while (session.progress() < fraction && !session.waitUntilFinished(1ms)) {
        }
        const auto start = Clock::now();
        session.cancelExport();
        while (!session.waitUntilFinished(10ms))
            ASSERT_LT(Clock::now() - start, patience);
    }
};

const std::vector<std::string> onlySource{"source"};

TEST_F(ReencodePipelineTest, StopsBeforeItHasBegun) {
    const auto cancelled = session();
    cancelled->cancelExport();
    EXPECT_EQ(test::run(*cancelled).status, Status::cancelled);
    EXPECT_EQ(cancelled->error(), nullptr);
    EXPECT_EQ(test::contents(folder()), onlySource);
}

TEST_F(ReencodePipelineTest, StopsAtOnceWhereverItIs) {
    for (const float fraction : {0.0F, 0.01F, 0.1F, 0.3F, 0.6F}) {
        SCOPED_TRACE(fraction);
        const auto cancelled = session();
        cancelAt(*cancelled, fraction);
        EXPECT_EQ(cancelled->status(), Status::cancelled);
        EXPECT_LT(cancelled->progress(), 1);
        EXPECT_EQ(test::contents(folder()), onlySource);
    }
}

TEST_F(ReencodePipelineTest, IsEitherWholeOrNothingWhenStoppedAtTheEnd) {
    const auto cancelled = session();
    cancelAt(*cancelled, 0.96F);
    if (cancelled->status() == Status::completed)
        EXPECT_EQ(test::contents(folder()), (std::vector<std::string>{"out", "source"}));
    else
        EXPECT_EQ(test::contents(folder()), onlySource);
}

TEST_F(ReencodePipelineTest, ChangesNothingWhenStoppedAfterTheEnd) {
    const auto finished = session();
    ASSERT_EQ(test::run(*finished).status, Status::completed);
    finished->cancelExport();
    EXPECT_EQ(finished->status(), Status::completed);
    EXPECT_FLOAT_EQ(finished->progress(), 1);
    EXPECT_TRUE(std::filesystem::exists(output()));
}

TEST_F(ReencodePipelineTest, EndsWithItsSession) {
    const auto start = Clock::now();
    {
        const auto abandoned = session();
        abandoned->exportAsynchronously();
        abandoned->waitUntilFinished(50ms);
    }
    EXPECT_LT(Clock::now() - start, patience);
    EXPECT_EQ(test::contents(folder()), onlySource);
}

TEST_F(ReencodePipelineTest, LeavesSomeoneElsesFileAlone) {
    const auto late = session();
    late->exportAsynchronously();
    while (late->progress() < 0.05F && !late->waitUntilFinished(1ms)) {
    }
    boxlift::test::writeFile(output(), "mine");
    while (!late->waitUntilFinished(100ms)) {
    }
    EXPECT_EQ(late->status(), Status::failed);
    EXPECT_EQ(boxlift::test::readFile(output()), "mine");
    EXPECT_EQ(test::contents(folder()), (std::vector<std::string>{"out", "source"}));
}

TEST_F(ReencodePipelineTest, NeedsAFolderThatCanBeWrittenTo) {
    if (geteuid() == 0)
        GTEST_SKIP() << "the superuser may write anywhere";
    const auto folder = path("closed");
    std::filesystem::create_directory(folder);
    chmod(folder.c_str(), 0500);
    const auto result = test::reencode(source(), folder / "out");
    chmod(folder.c_str(), 0700);
    EXPECT_EQ(result.status, Status::failed);
    EXPECT_EQ(result.error, ErrorKind::notPermitted);
}

/// Exits with zero when an export says that there is no more room.
[[noreturn]] void exportIntoALittleRoom(const std::filesystem::path& source,
                                        const std::filesystem::path& output) {
    const rlimit little{20'000, 20'000};
    std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &little);
    const auto result = test::reencode(source, output, {.optimize = true});
    const bool isRight = result.status == Status::failed && result.error == ErrorKind::noSpace;
    std::_Exit(isRight ? 0 : 1);
}

TEST_F(ReencodePipelineTest, LeavesNothingOnAFullDisk) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(exportIntoALittleRoom(source(), output()), testing::ExitedWithCode(0), "");
    EXPECT_EQ(test::contents(folder()), onlySource);
}

} // namespace

} // namespace boxlift::media
