#include <gtest/gtest.h>

#include <QAccessible>

#include "ui/support/window_host.h"

namespace boxlift::test {
namespace {

constexpr char checkBox[] = R"(
    Item { CheckBox { objectName: "box"; x: 20; y: 20; text: "Remove audio" } })";

bool checked(WindowHost& host) {
    return host.item(QStringLiteral("box"))->property("checked").toBool();
}

TEST(CheckBox, IsToggledByMouseAndKeyboard) {
    WindowHost host(checkBox);
    host.click(host.item(QStringLiteral("box")));
    EXPECT_TRUE(checked(host));
    host.key(Qt::Key_Space);
    EXPECT_FALSE(checked(host));
}

TEST(CheckBox, IsReachedByTab) {
    WindowHost host(checkBox);
    host.key(Qt::Key_Tab);
    EXPECT_EQ(host.focused().toStdString(), "box");
    EXPECT_TRUE(host.item(QStringLiteral("box"))->property("visualFocus").toBool());
}

TEST(CheckBox, IsFilledWithTheAccentWhenItIsChecked) {
    WindowHost host(checkBox);
    const QPoint inside = host.item(QStringLiteral("box"))->mapToScene(QPointF(11, 13)).toPoint();
    EXPECT_EQ(host.picture().pixelColor(inside).name().toStdString(), "#ffffff");
    host.click(host.item(QStringLiteral("box")));
    EXPECT_EQ(host.picture().pixelColor(inside).name().toStdString(), "#0a6cff");
}

TEST(CheckBox, TellsItsStateToAssistants) {
    WindowHost host(checkBox);
    QAccessibleInterface* box =
        QAccessible::queryAccessibleInterface(host.item(QStringLiteral("box")));
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->role(), QAccessible::CheckBox);
    EXPECT_EQ(box->text(QAccessible::Name).toStdString(), "Remove audio");
    EXPECT_FALSE(box->state().checked);
    host.click(host.item(QStringLiteral("box")));
    EXPECT_TRUE(box->state().checked);
}

} // namespace
} // namespace boxlift::test
