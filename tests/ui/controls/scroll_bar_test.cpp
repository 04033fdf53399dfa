#include <gtest/gtest.h>

#include <QTest>

#include "ui/support/window_host.h"

namespace boxlift::test {
namespace {

constexpr char scrollBar[] = R"(
    Item {
        width: 200; height: 200
        ScrollBar { objectName: "bar"; orientation: Qt.Vertical; height: 200; size: 0.5; policy: ScrollBar.AlwaysOn }
    })";

TEST(ScrollBar, IsDraggedWithTheMouse) {
    WindowHost host(scrollBar);
    QTest::mousePress(&host.window(), Qt::LeftButton, {}, QPoint(6, 20));
    QTest::mouseMove(&host.window(), QPoint(6, 70));
    QTest::mouseRelease(&host.window(), Qt::LeftButton, {}, QPoint(6, 70));
    EXPECT_NEAR(host.item(QStringLiteral("bar"))->property("position").toDouble(), 0.25, 0.02);
}

TEST(ScrollBar, HidesWhenEverythingIsSeen) {
    WindowHost host(scrollBar);
    EXPECT_NE(host.shown(QStringLiteral("bar")), nullptr);
    host.item(QStringLiteral("bar"))->setProperty("size", 1);
    EXPECT_EQ(host.shown(QStringLiteral("bar")), nullptr);
}

} // namespace
} // namespace boxlift::test
