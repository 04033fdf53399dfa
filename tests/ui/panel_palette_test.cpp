#include "ui/panel_palette.h"

#include <gtest/gtest.h>

#include <QGuiApplication>

#include "ui/support/pixels.h"
#include "ui/support/window_host.h"

namespace boxlift::test {
namespace {

class PanelPaletteIn : public testing::TestWithParam<bool> {};

TEST_P(PanelPaletteIn, HasTheWindowsColours) {
    QGuiApplication::setPalette(QPalette(GetParam() ? QColor(30, 30, 30) : QColor(240, 240, 240)));
    WindowHost host("Item { property QtObject theme: Theme }");
    const QObject* theme = host.root().property("theme").value<QObject*>();
    ASSERT_EQ(theme->property("dark").toBool(), GetParam());
    const QPalette palette = panelPalette(*theme);
    EXPECT_EQ(palette.color(QPalette::Window), theme->property("window").value<QColor>());
    EXPECT_EQ(palette.color(QPalette::Text), theme->property("primary").value<QColor>());
    EXPECT_GE(contrast(palette.color(QPalette::Text), palette.color(QPalette::Base)), 4.5);
    EXPECT_GE(contrast(palette.color(QPalette::ButtonText), palette.color(QPalette::Button)), 4.5);
    EXPECT_LT(contrast(palette.color(QPalette::Disabled, QPalette::ButtonText),
                       palette.color(QPalette::Button)),
              contrast(palette.color(QPalette::ButtonText), palette.color(QPalette::Button)));
}

INSTANTIATE_TEST_SUITE_P(LightAndDark, PanelPaletteIn, testing::Bool());

} // namespace
} // namespace boxlift::test
