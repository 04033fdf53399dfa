#include <chrono>

#include <gtest/gtest.h>

#include <QTest>

#include "ui/support/frame_counter.h"
#include "ui/support/stage.h"
#include "ui/support/window_host.h"

namespace boxlift::test {
namespace {

using namespace std::chrono_literals;

/// How often the window is drawn.
class Redraw : public testing::Test {
protected:
    void fill(int count) {
        for (int i = 0; i < count; ++i) {
            const std::string name = "file " + std::to_string(i) + ".mov";
            if (i % 3 == 0)
                stage.addFailed(name, "This file could not be opened.");
            else
                stage.addReady(name);
        }
    }

    void scrollTo(double y) {
        host.item(QStringLiteral("jobList"))->setProperty("contentY", y);
        QTest::qWait(100);
    }

    /// The conversion that goes on reports a hundred times a second.
    int framesWhileItReports() {
        FrameCounter counter(host.window());
        int frames = 0;
        for (int i = 1; i <= 100; ++i) {
            stage.report(i / 101.0);
            frames += counter.during(10ms);
        }
        return frames;
    }

    int framesOf(std::chrono::milliseconds time) {
        return FrameCounter(host.window()).during(time);
    }

    Stage stage;
    WindowHost host{QStringLiteral("ContentView"),
                    {{QStringLiteral("queue"), QVariant::fromValue(&stage.queue())}},
                    {780, 520}};
};

TEST_F(Redraw, DrawsNothingWhileNothingHappens) {
    fill(30);
    scrollTo(900);
    QTest::qWait(200);
    EXPECT_EQ(framesOf(500ms), 0);
}

TEST_F(Redraw, DrawsNothingForAFileThatIsReadOutOfSight) {
    fill(10);
    stage.addReading("below the window.mov");
    QTest::qWait(200);
    EXPECT_EQ(framesOf(500ms), 0);
}

TEST_F(Redraw, DrawsTenFramesASecondWhileAFileIsRead) {
    stage.addReading("film.mov");
    QTest::qWait(200);
    const int frames = framesOf(1s);
    EXPECT_GE(frames, 5);
    EXPECT_LE(frames, 11);
}

TEST_F(Redraw, DrawsNothingWhileAConversionWaits) {
    stage.convert(stage.addReady("film.mov"));
    QTest::qWait(200);
    EXPECT_EQ(framesOf(500ms), 0);
}

TEST_F(Redraw, DrawsAtMostTenFramesASecondWhileAFileConverts) {
    Job* job = stage.addReady("film.mov");
    stage.convert(job);
    QTest::qWait(200);
    const auto start = std::chrono::steady_clock::now();
    const int frames = framesWhileItReports();
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    EXPECT_GT(job->progress(), 0.5);
    EXPECT_GE(frames, 5);
    EXPECT_LE(frames, 10 * time.count() + 1);
}

} // namespace
} // namespace boxlift::test
