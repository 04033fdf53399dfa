#include "ui/system_font.h"

#include <vector>

#include <gtest/gtest.h>

#include <QFontDatabase>
#include <QFontInfo>
#include <QSignalSpy>

#include "ui/support/font_size.h"

namespace boxlift::test {
namespace {

TEST(SystemFont, LeavesTheDesignAloneAtTheUsualSizes) {
    EXPECT_DOUBLE_EQ(SystemFont::scaleFor(12), 1);
    EXPECT_DOUBLE_EQ(SystemFont::scaleFor(13), 1);
    EXPECT_DOUBLE_EQ(SystemFont::scaleFor(15), 1);
}

TEST(SystemFont, GrowsWithLargerTextUpToALimit) {
    EXPECT_DOUBLE_EQ(SystemFont::scaleFor(18), 1.2);
    EXPECT_DOUBLE_EQ(SystemFont::scaleFor(30), 2);
    EXPECT_DOUBLE_EQ(SystemFont::scaleFor(300), 3);
}

TEST(SystemFont, ShrinksWithSmallerTextDownToALimit) {
    EXPECT_DOUBLE_EQ(SystemFont::scaleFor(10.8), 0.9);
    EXPECT_DOUBLE_EQ(SystemFont::scaleFor(1), 0.75);
}

TEST(SystemFont, IsInterWhereItIsInstalled) {
    if (!QFontDatabase::hasFamily(QStringLiteral("Inter")))
        GTEST_SKIP() << "Inter is not installed";
    EXPECT_EQ(SystemFont().family().toStdString(), "Inter");
}

TEST(SystemFont, FollowsTheSystem) {
    FontSize size(13);
    SystemFont systemFont;
    QSignalSpy changes(&systemFont, &SystemFont::changed);
    ASSERT_DOUBLE_EQ(systemFont.scale(), 1);
    size.set(30);
    EXPECT_DOUBLE_EQ(systemFont.scale(), 2);
    EXPECT_EQ(changes.count(), 1);
}

TEST(SystemFont, MeasuresTheSystemsTextAsItsFontWouldBe) {
    const QFont before = QGuiApplication::font();
    QFont font = before;
    for (const double points : {8.0, 10.5, 11.5, 14.0, 22.5}) {
        font.setPointSizeF(points);
        QApplication::setFont(font);
        const double expected = SystemFont::scaleFor(QFontInfo(font).pixelSize());
        EXPECT_DOUBLE_EQ(SystemFont().scale(), expected) << points;
    }
    QApplication::setFont(before);
}

std::vector<int> sizes(const SystemFont& font) {
    return {font.title2(), font.headline(), font.body(), font.caption(), font.caption2()};
}

TEST(SystemFont, SaysHowLargeTextIs) {
    FontSize size(13);
    const SystemFont systemFont;
    EXPECT_EQ(sizes(systemFont), (std::vector{17, 13, 13, 11, 10}));
    size.set(18);
    EXPECT_EQ(sizes(systemFont), (std::vector{20, 16, 16, 13, 12}));
}

} // namespace
} // namespace boxlift::test
