#include "ui/desktop/run_presence.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QTest>

#include "ui/support/fake_inhibitors.h"
#include "ui/support/fake_notifications.h"
#include "ui/support/private_bus.h"
#include "ui/support/stage.h"

namespace boxlift::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string sentence(int done, int failed) {
    return RunPresence::sentence({.planned = done + failed, .done = done, .failed = failed})
        .toStdString();
}

TEST(RunPresence, CountsInASentence) {
    EXPECT_EQ(sentence(1, 0), "1 file is done.");
    EXPECT_EQ(sentence(2, 0), "2 files are done.");
    EXPECT_EQ(sentence(1, 2), "1 file is done, 2 failed.");
    EXPECT_EQ(sentence(12, 1), "12 files are done, 1 failed.");
    EXPECT_EQ(sentence(0, 1), "1 file failed.");
    EXPECT_EQ(sentence(0, 3), "3 files failed.");
    EXPECT_EQ(sentence(0, 0), "");
}

class RunPresenceTest : public testing::Test {
protected:
    void SetUp() override {
        if (!bus.runs())
            GTEST_SKIP() << "no dbus-daemon";
        ASSERT_TRUE(bus.offer(QStringLiteral("org.gnome.SessionManager"),
                              QStringLiteral("/org/gnome/SessionManager"), sessionManager));
        ASSERT_TRUE(bus.offer(QStringLiteral("org.freedesktop.Notifications"),
                              QStringLiteral("/org/freedesktop/Notifications"), notifications));
    }
    bool waitForIdle() {
        return QTest::qWaitFor([&] { return !stage.queue().isRunning(); });
    }

    PrivateBus bus;
    FakeSessionManager sessionManager;
    FakeNotifications notifications;
    Stage stage;
    bool isInFront = false;
    RunPresence presence{stage.queue(), bus.clients(), [this] { return isInFront; }};
};

TEST_F(RunPresenceTest, KeepsTheMachineAwakeDuringARun) {
    stage.convert(stage.addReady("a.mov"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return !sessionManager.reasons.isEmpty(); }));
    EXPECT_THAT(sessionManager.givenBack, IsEmpty());
    stage.finish(Mode::boxlift);
    ASSERT_TRUE(waitForIdle());
    EXPECT_TRUE(QTest::qWaitFor([&] { return !sessionManager.givenBack.isEmpty(); }));
}

TEST_F(RunPresenceTest, TellsOfTheEndWhenTheWindowIsInTheBackground) {
    stage.convert(stage.addReady("a.mov"));
    stage.finish(Mode::boxlift);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !notifications.bodies.isEmpty(); }));
    EXPECT_THAT(notifications.summaries, ElementsAre(QStringLiteral("Conversion finished")));
    EXPECT_THAT(notifications.bodies, ElementsAre(QStringLiteral("1 file is done.")));
}

TEST_F(RunPresenceTest, TellsOfFailures) {
    stage.convert(stage.addReady("a.mov"));
    stage.fail("The media can't be decoded.");
    EXPECT_TRUE(QTest::qWaitFor([&] { return !notifications.bodies.isEmpty(); }));
    EXPECT_THAT(notifications.bodies, ElementsAre(QStringLiteral("1 file failed.")));
}

TEST_F(RunPresenceTest, KeepsQuietWhenTheUserSeesTheWindow) {
    isInFront = true;
    stage.convert(stage.addReady("a.mov"));
    stage.finish(Mode::boxlift);
    ASSERT_TRUE(waitForIdle());
    QTest::qWait(100);
    EXPECT_THAT(notifications.bodies, IsEmpty());
}

TEST_F(RunPresenceTest, KeepsQuietAboutARunThatWasStopped) {
    stage.convert(stage.addReady("a.mov"));
    stage.queue().task()->cancel();
    ASSERT_TRUE(waitForIdle());
    QTest::qWait(100);
    EXPECT_THAT(notifications.bodies, IsEmpty());
}

TEST_F(RunPresenceTest, BringsTheWindowOnAClick) {
    const QSignalSpy wanted(&presence, &RunPresence::windowWanted);
    stage.convert(stage.addReady("a.mov"));
    stage.finish(Mode::boxlift);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !notifications.bodies.isEmpty(); }));
    QTest::qWait(50);
    FakeNotifications::act(bus.services(), 41, QStringLiteral("default"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return wanted.count() == 1; }));
}

} // namespace
} // namespace boxlift::test
