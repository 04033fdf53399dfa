#include <gtest/gtest.h>

#include <QImage>

#include "ui/support/window_host.h"
#include "ui/symbol_provider.h"

namespace boxlift::test {
namespace {

constexpr char symbol[] = R"(
    Rectangle {
        width: 100; height: 100
        color: "#ffffff"
        Symbol { objectName: "icon"; x: 20; y: 20; name: "film"; size: 28; color: "#000000" }
    })";

/// What the test run says that the screen has; 1 by default.
double expectedPixelRatio() {
    bool given = false;
    const double ratio = qEnvironmentVariable("BOXLIFT_TEST_PIXEL_RATIO").toDouble(&given);
    return given ? ratio : 1;
}

QImage drawn(int side) {
    QSize size;
    return SymbolProvider().requestImage(QStringLiteral("film/000000"), &size, {side, side});
}

TEST(Symbol, IsDrawnPixelByPixelForTheScreen) {
    WindowHost host(symbol);
    const double ratio = host.window().effectiveDevicePixelRatio();
    ASSERT_EQ(ratio, expectedPixelRatio());
    const QImage picture = host.picture();
    const QImage expected = drawn(qRound(28 * ratio));
    const int origin = qRound(20 * ratio);
    int different = 0;
    for (int y = 0; y < expected.height(); ++y) {
        for (int x = 0; x < expected.width(); ++x) {
            const int shade = 255 - picture.pixelColor(origin + x, origin + y).red();
            different += std::abs(shade - expected.pixelColor(x, y).alpha()) > 2 ? 1 : 0;
        }
    }
    EXPECT_EQ(different, 0);
}

TEST(Symbol, FollowsItsColour) {
    WindowHost host(symbol);
    host.item(QStringLiteral("icon"))->setProperty("color", QColor(Qt::red));
    const double ratio = host.window().effectiveDevicePixelRatio();
    // On the left edge of the film.
    const QPoint edge = QPoint(static_cast<int>(22.5 * ratio), static_cast<int>(32 * ratio));
    EXPECT_GT(host.picture().pixelColor(edge).red(), 250);
    EXPECT_LT(host.picture().pixelColor(edge).green(), 60);
}

} // namespace
} // namespace boxlift::test
