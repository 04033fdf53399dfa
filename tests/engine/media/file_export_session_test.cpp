#include "engine/media/file_export_session.h"

#include <gtest/gtest.h>

#include <functional>
#include <latch>
#include <stdexcept>

#include "engine/media/error.h"
#include "model/cancelled.h"

namespace boxlift::media {

namespace {

using namespace std::chrono_literals;
using Status = ExportSession::Status;

/// A session whose work is the test's.
class Session : public FileExportSession {
public:
    using Work = std::function<void(Session&, std::stop_token)>;

    explicit Session(Work work) : FileExportSession({}, {}), m_work(std::move(work)) {}
    ~Session() override { join(); }

    using FileExportSession::setProgress;
    std::vector<FileType> supportedFileTypes() const override { return {}; }
    const std::filesystem::path& output() const { return m_output; }
    FileType type() const { return m_type; }
    bool isOptimized() const { return m_isOptimized; }

private:
    void run(const Settings& settings, std::stop_token stop) override {
        m_output = settings.output.path;
        m_type = settings.type;
        m_isOptimized = settings.optimize;
        m_work(*this, stop);
    }

    Work m_work;
    std::filesystem::path m_output;
    FileType m_type = FileType::AVFileTypeMPEG4;
    bool m_isOptimized = false;
};

void waitForStop(const std::stop_token& stop) {
    std::latch stopped(1);
    const std::stop_callback tell(stop, [&] { stopped.count_down(); });
    stopped.wait();
}

void finish(Session& session) {
    session.exportAsynchronously();
    ASSERT_TRUE(session.waitUntilFinished(10s));
}

} // namespace

TEST(FileExportSession, HasDoneNothingBeforeItsStart) {
    const Session session([](Session&, const std::stop_token&) {});
    EXPECT_EQ(session.status(), Status::unknown);
    EXPECT_EQ(session.progress(), 0);
    EXPECT_EQ(session.error(), nullptr);
}

TEST(FileExportSession, Completes) {
    Session session([](Session&, const std::stop_token&) {});
    finish(session);
    EXPECT_EQ(session.status(), Status::completed);
    EXPECT_EQ(session.progress(), 1);
    EXPECT_EQ(session.error(), nullptr);
}

TEST(FileExportSession, WorksWithItsSettings) {
    Session session([](Session&, const std::stop_token&) {});
    session.setOutputUrl("/out.mov");
    session.setOutputFileType(FileType::AVFileTypeQuickTimeMovie);
    session.setShouldOptimizeForNetworkUse(true);
    finish(session);
    EXPECT_EQ(session.output(), "/out.mov");
    EXPECT_EQ(session.type(), FileType::AVFileTypeQuickTimeMovie);
    EXPECT_TRUE(session.isOptimized());
}

TEST(FileExportSession, IsExportingWhileItWorks) {
    std::latch goOn(1);
    Session session([&](Session&, const std::stop_token&) { goOn.wait(); });
    session.exportAsynchronously();
    EXPECT_EQ(session.status(), Status::exporting);
    EXPECT_FALSE(session.waitUntilFinished(1ms));
    goOn.count_down();
    EXPECT_TRUE(session.waitUntilFinished(10s));
    EXPECT_EQ(session.status(), Status::completed);
}

TEST(FileExportSession, StaysBelowOneUntilItHasCompleted) {
    float half = 0;
    float most = 0;
    float tooMuch = 0;
    Session session([&](Session& self, const std::stop_token&) {
        self.setProgress(0.5);
        half = self.progress();
        self.setProgress(1);
        most = self.progress();
        self.setProgress(7);
        tooMuch = self.progress();
    });
    finish(session);
    EXPECT_EQ(half, 0.5F);
    EXPECT_GT(most, 0.99F);
    EXPECT_LT(most, 1);
    EXPECT_EQ(tooMuch, most);
    EXPECT_EQ(session.progress(), 1);
}

TEST(FileExportSession, NeverGoesBack) {
    Session session([](Session& self, const std::stop_token&) {
        self.setProgress(0.5);
        self.setProgress(0.25);
        self.setProgress(-3);
        throw std::runtime_error("enough");
    });
    finish(session);
    EXPECT_EQ(session.progress(), 0.5F);
}

TEST(FileExportSession, KeepsTheErrorThatEndedIt) {
    Session session([](Session&, const std::stop_token&) {
        throw Error(ErrorKind::noSpace, "write", "/out", "full");
    });
    finish(session);
    EXPECT_EQ(session.status(), Status::failed);
    EXPECT_LT(session.progress(), 1);
    try {
        std::rethrow_exception(session.error());
    } catch (const Error& error) {
        EXPECT_EQ(error.kind(), ErrorKind::noSpace);
    }
}

TEST(FileExportSession, DoesNotBeginAfterACancellation) {
    bool hasRun = false;
    Session session([&](Session&, const std::stop_token&) { hasRun = true; });
    session.cancelExport();
    finish(session);
    EXPECT_EQ(session.status(), Status::cancelled);
    EXPECT_EQ(session.error(), nullptr);
    EXPECT_FALSE(hasRun);
}

TEST(FileExportSession, IsCancelledWhateverTheInterruptedCallSays) {
    std::latch begun(1);
    Session session([&](Session&, const std::stop_token& stop) {
        begun.count_down();
        waitForStop(stop);
        throw Error(ErrorKind::cannotDecode, "read", "/in", "interrupted");
    });
    session.exportAsynchronously();
    begun.wait();
    session.cancelExport();
    EXPECT_TRUE(session.waitUntilFinished(10s));
    EXPECT_EQ(session.status(), Status::cancelled);
    EXPECT_EQ(session.error(), nullptr);
    EXPECT_LT(session.progress(), 1);
}

TEST(FileExportSession, IsCancelledWithoutBeingAskedWhenItsWorkIs) {
    Session session([](Session&, const std::stop_token&) { throw Cancelled(); });
    finish(session);
    EXPECT_EQ(session.status(), Status::cancelled);
    EXPECT_EQ(session.error(), nullptr);
}

TEST(FileExportSession, HasCompletedWhenTheCancellationCameAfterTheLastAct) {
    std::latch begun(1);
    Session session([&](Session&, const std::stop_token& stop) {
        begun.count_down();
        waitForStop(stop);
    });
    session.exportAsynchronously();
    begun.wait();
    session.cancelExport();
    EXPECT_TRUE(session.waitUntilFinished(10s));
    EXPECT_EQ(session.status(), Status::completed);
    session.cancelExport();
    EXPECT_EQ(session.status(), Status::completed);
    EXPECT_EQ(session.progress(), 1);
}

TEST(FileExportSession, CancelsAndWaitsWhenItGoes) {
    std::atomic<bool> hasEnded = false;
    std::latch begun(1);
    {
        Session session([&](Session&, const std::stop_token& stop) {
            begun.count_down();
            waitForStop(stop);
            hasEnded = true;
        });
        session.exportAsynchronously();
        begun.wait();
    }
    EXPECT_TRUE(hasEnded);
}

} // namespace boxlift::media
