#include "ui/dashed_outline.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <QSignalSpy>

#include "ui/support/pixels.h"

namespace boxlift::test {
namespace {

const QColor accent(10, 108, 255);

QImage painted(DashedOutline& outline, QSize size) {
    outline.setSize(size);
    outline.setColor(accent);
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    QPainter painter(&image);
    outline.paint(&painter);
    return image;
}

TEST(DashedOutline, LaysAThinVeilOverTheWholeFrame) {
    DashedOutline outline;
    const QImage image = painted(outline, {200, 120});
    QColor veil = accent;
    veil.setAlphaF(0.08F);
    const QColor expected = over(veil, Qt::white);
    for (const QPoint point : {QPoint(100, 60), QPoint(0, 0), QPoint(199, 119)}) {
        EXPECT_NEAR(image.pixelColor(point).red(), expected.red(), 1);
        EXPECT_NEAR(image.pixelColor(point).blue(), expected.blue(), 1);
    }
}

TEST(DashedOutline, IsThreePixelsWideAndStaysInsideItsFrame) {
    DashedOutline outline;
    const QImage image = painted(outline, {200, 120});
    // The first dash of the upper edge begins where the corner ends.
    const int x = 22;
    for (int y = 0; y < 3; ++y)
        EXPECT_EQ(image.pixelColor(x, y), accent) << y;
    EXPECT_NE(image.pixelColor(x, 3), accent);
}

TEST(DashedOutline, HasDashesOfEightAndGapsOfEight) {
    DashedOutline outline;
    const QImage image = painted(outline, {200, 120});
    std::string edge;
    for (int x = 18; x < 18 + 64; ++x)
        edge += image.pixelColor(x, 1) == accent ? '#' : '.';
    const std::size_t first = edge.find(".#");
    ASSERT_NE(first, std::string::npos);
    // Dashes that begin between two pixels are one fewer, or one gap more.
    const std::string period = edge.substr(first + 1, 32);
    EXPECT_EQ(period.substr(0, 16), period.substr(16, 16));
    EXPECT_NEAR(static_cast<double>(std::count(period.begin(), period.end(), '#')), 16, 2);
    EXPECT_NE(period.find("#######"), std::string::npos);
    EXPECT_NE(period.find("......."), std::string::npos);
}

TEST(DashedOutline, RoundsItsCorners) {
    const QPainterPath path = DashedOutline::smoothRectangle({0, 0, 200, 120}, 12);
    EXPECT_EQ(path.boundingRect(), QRectF(0, 0, 200, 120));
    EXPECT_FALSE(path.contains(QPointF(2, 2)));
    // Where the diagonal of the corner meets a circle of this radius.
    const double edge = 12 * (1 - 0.70710678);
    EXPECT_FALSE(path.contains(QPointF(edge - 0.1, edge - 0.1)));
    EXPECT_TRUE(path.contains(QPointF(edge + 0.1, edge + 0.1)));
    // Eased: on the edge, the corner begins before the circle would.
    EXPECT_FALSE(path.contains(QPointF(13, 0.01)));
    EXPECT_TRUE(path.contains(QPointF(18.5, 0.01)));
}

TEST(DashedOutline, FitsItsCornersIntoASmallFrame) {
    const QPainterPath path = DashedOutline::smoothRectangle({0, 0, 10, 10}, 12);
    EXPECT_EQ(path.boundingRect(), QRectF(0, 0, 10, 10));
}

TEST(DashedOutline, GrowsWithItsScaling) {
    DashedOutline outline;
    outline.setScaling(2);
    const QImage image = painted(outline, {200, 120});
    EXPECT_EQ(image.pixelColor(42, 5), accent);
    EXPECT_NE(image.pixelColor(42, 6), accent);
}

TEST(DashedOutline, TellsChangesOnce) {
    DashedOutline outline;
    QSignalSpy colors(&outline, &DashedOutline::colorChanged);
    QSignalSpy scalings(&outline, &DashedOutline::scalingChanged);
    outline.setColor(accent);
    outline.setColor(accent);
    outline.setScaling(2);
    outline.setScaling(2);
    EXPECT_EQ(colors.count(), 1);
    EXPECT_EQ(scalings.count(), 1);
}

} // namespace
} // namespace boxlift::test
