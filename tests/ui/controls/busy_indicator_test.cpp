#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QTest>

#include "ui/support/window_host.h"

namespace boxlift::test {
namespace {

constexpr char busyIndicator[] = R"(
    Item { BusyIndicator { objectName: "wheel"; x: 20; y: 20; running: true } })";

/// Counts the wheel's steps while `milliseconds` go by.
int steps(WindowHost& host, int milliseconds) {
    const auto* wheel =
        host.item(QStringLiteral("wheel"))->property("contentItem").value<QQuickItem*>();
    int before = wheel->property("step").toInt();
    int counted = 0;
    QElapsedTimer time;
    time.start();
    while (time.elapsed() < milliseconds) {
        QTest::qWait(10);
        const int now = wheel->property("step").toInt();
        counted += (now - before + 8) % 8;
        before = now;
    }
    return counted;
}

TEST(BusyIndicator, StepsTenTimesASecond) {
    WindowHost host(busyIndicator);
    const int counted = steps(host, 1000);
    EXPECT_GE(counted, 6);
    EXPECT_LE(counted, 11);
}

TEST(BusyIndicator, RestsWhileItIsHidden) {
    WindowHost host(busyIndicator);
    host.root().setVisible(false);
    EXPECT_EQ(steps(host, 350), 0);
    host.root().setVisible(true);
    EXPECT_GT(steps(host, 350), 0);
}

TEST(BusyIndicator, RestsWhileTheWindowIsHidden) {
    WindowHost host(busyIndicator);
    host.window().hide();
    EXPECT_EQ(steps(host, 350), 0);
}

TEST(BusyIndicator, RestsWhenItIsNotRunning) {
    WindowHost host(busyIndicator);
    host.item(QStringLiteral("wheel"))->setProperty("running", false);
    EXPECT_EQ(steps(host, 350), 0);
}

} // namespace
} // namespace boxlift::test
