#include <gtest/gtest.h>

#include "ui/support/window_host.h"

namespace boxlift::test {
namespace {

constexpr char progressBar[] = R"(
    Item { ProgressBar { objectName: "bar"; x: 20; y: 20; width: 200; value: 0.5 } })";

std::string colorAt(WindowHost& host, double x) {
    const QPoint point = host.item(QStringLiteral("bar"))->mapToScene(QPointF(x, 3)).toPoint();
    return host.picture().pixelColor(point).name().toStdString();
}

TEST(ProgressBar, IsFilledAsFarAsItsValue) {
    WindowHost host(progressBar);
    EXPECT_EQ(colorAt(host, 10), "#0a6cff");
    EXPECT_EQ(colorAt(host, 90), "#0a6cff");
    EXPECT_NE(colorAt(host, 110), "#0a6cff");
    host.item(QStringLiteral("bar"))->setProperty("value", 1);
    EXPECT_EQ(colorAt(host, 190), "#0a6cff");
}

TEST(ProgressBar, IsEmptyAtZero) {
    WindowHost host(progressBar);
    host.item(QStringLiteral("bar"))->setProperty("value", 0);
    EXPECT_NE(colorAt(host, 3), "#0a6cff");
}

TEST(ProgressBar, TakesATint) {
    WindowHost host(progressBar);
    host.item(QStringLiteral("bar"))->setProperty("tint", QColor(Qt::red));
    EXPECT_EQ(colorAt(host, 50), "#ff0000");
}

} // namespace
} // namespace boxlift::test
