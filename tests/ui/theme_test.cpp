#include <gtest/gtest.h>

#include <QApplication>
#include <QPalette>

#include "ui/support/font_size.h"
#include "ui/support/pixels.h"
#include "ui/support/window_host.h"

namespace boxlift::test {
namespace {

constexpr double readable = 4.5;

class ThemeIn : public testing::TestWithParam<bool> {
protected:
    void SetUp() override {
        QGuiApplication::setPalette(
            QPalette(GetParam() ? QColor(30, 30, 30) : QColor(240, 240, 240)));
        host = std::make_unique<WindowHost>("Item { property QtObject theme: Theme }");
        theme = host->root().property("theme").value<QObject*>();
        ASSERT_NE(theme, nullptr);
        ASSERT_EQ(theme->property("dark").toBool(), GetParam());
    }

    QColor color(const char* name) const { return theme->property(name).value<QColor>(); }

    std::unique_ptr<WindowHost> host;
    QObject* theme = nullptr;
};

TEST_P(ThemeIn, HasReadableTextOnEverySurface) {
    for (const char* surface : {"window", "bar", "card", "popup"}) {
        for (const char* text : {"primary", "secondary"})
            EXPECT_GE(contrast(color(text), color(surface)), readable) << text << " on " << surface;
    }
}

TEST_P(ThemeIn, HasReadableTextOnTheFacesOfItsControls) {
    for (const char* face : {"control", "controlHover", "controlDown"})
        EXPECT_GE(contrast(color("primary"), color(face)), readable) << face;
}

TEST_P(ThemeIn, HasReadableSelectedChoicesInItsPopups) {
    EXPECT_GE(contrast(color("accentText"), color("accentFill")), readable);
    EXPECT_GE(contrast(color("secondary"), color("popup")), readable);
}

TEST_P(ThemeIn, HasReadableColouredTextOnTheCard) {
    for (const char* name : {"green", "orange", "red"})
        EXPECT_GE(contrast(color(name), color("card")), readable) << name;
}

TEST_P(ThemeIn, HasReadableTextInTheBadgesOfItsOwnColour) {
    for (const char* name : {"green", "orange"}) {
        QColor badge = color(name);
        badge.setAlphaF(0.2F);
        EXPECT_GE(contrast(color(name), over(badge, color("card"))), readable) << name;
    }
}

TEST_P(ThemeIn, HasReadableTextOnTheAccent) {
    EXPECT_GE(contrast(color("accentText"), color("accentFill")), readable);
}

INSTANTIATE_TEST_SUITE_P(LightAndDark, ThemeIn, testing::Bool());

TEST(Theme, GrowsAsAWholeWithTheSystemsText) {
    WindowHost host(
        "Item { property int body: Theme.body; property int control: Theme.controlHeight }");
    EXPECT_EQ(host.root().property("body").toInt(), 13);
    EXPECT_EQ(host.root().property("control").toInt(), 26);
    const FontSize large(30);
    EXPECT_EQ(host.root().property("body").toInt(), 26);
    EXPECT_EQ(host.root().property("control").toInt(), 52);
}

} // namespace
} // namespace boxlift::test
