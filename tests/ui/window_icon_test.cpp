#include "ui/window_icon.h"

#include <gtest/gtest.h>

#include <QImage>

#include "ui/support/pixels.h"

namespace boxlift::test {
namespace {

class WindowIcon : public testing::TestWithParam<int> {
protected:
    QColor at(double x, double y) const {
        const int side = GetParam();
        return picture.pixelColor(static_cast<int>(x * side), static_cast<int>(y * side));
    }

    const QImage picture = windowIcon().pixmap(GetParam()).toImage();
};

TEST_P(WindowIcon, IsDrawnAtThisSize) {
    ASSERT_EQ(picture.size(), QSize(GetParam(), GetParam()));
    EXPECT_EQ(at(0, 0).alpha(), 0) << "round corners";
    EXPECT_EQ(at(0.5, 0.9).alpha(), 255);
}

TEST_P(WindowIcon, StandsOutFromItsGround) {
    const QColor arrow = at(0.5, 0.4);
    const QColor box = at(0.5, 0.72);
    const QColor ground = at(0.15, 0.4);
    EXPECT_GE(contrast(arrow, ground), 3);
    EXPECT_GE(contrast(box, at(0.5, 0.9)), 3);
}

INSTANTIATE_TEST_SUITE_P(Sizes, WindowIcon, testing::Values(16, 24, 32, 48, 64, 128));

} // namespace
} // namespace boxlift::test
