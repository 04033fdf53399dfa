#include <gtest/gtest.h>

#include <QAccessible>
#include <QSignalSpy>

#include "ui/support/pixels.h"
#include "ui/support/window_host.h"

namespace boxlift::test {
namespace {

constexpr char twoButtons[] = R"(
    Row {
        property int presses: 0
        spacing: 20; padding: 20
        Button { objectName: "first"; text: "First"; onClicked: parent.presses += 1 }
        Button { objectName: "second"; text: "Second"; prominent: true; large: true }
    })";

TEST(Button, HasTheHeightsOfItsTwoSizes) {
    WindowHost host(twoButtons);
    EXPECT_EQ(host.item(QStringLiteral("first"))->height(), 26);
    EXPECT_EQ(host.item(QStringLiteral("second"))->height(), 32);
}

TEST(Button, IsPressedByMouseAndKeyboard) {
    WindowHost host(twoButtons);
    host.click(host.item(QStringLiteral("first")));
    host.key(Qt::Key_Tab);
    host.key(Qt::Key_Backtab, Qt::ShiftModifier);
    ASSERT_EQ(host.focused().toStdString(), "first");
    host.key(Qt::Key_Space);
    EXPECT_EQ(host.root().property("presses").toInt(), 2);
}

TEST(Button, IsNotPressedWhenItIsDisabled) {
    WindowHost host(twoButtons);
    host.item(QStringLiteral("first"))->setEnabled(false);
    host.click(host.item(QStringLiteral("first")));
    EXPECT_EQ(host.root().property("presses").toInt(), 0);
    EXPECT_LT(host.item(QStringLiteral("first"))->opacity(), 0.5);
}

TEST(Button, IsReachedByTab) {
    WindowHost host(twoButtons);
    host.key(Qt::Key_Tab);
    EXPECT_EQ(host.focused().toStdString(), "first");
    host.key(Qt::Key_Tab);
    EXPECT_EQ(host.focused().toStdString(), "second");
}

TEST(Button, HasARingWhenTheKeyboardGaveItTheFocus) {
    WindowHost host(twoButtons);
    QQuickItem* button = host.item(QStringLiteral("first"));
    // To the left of the button, where only the ring is.
    const QPoint beside = button->mapToScene(QPointF(-2, 13)).toPoint();
    const QColor ground = host.picture().pixelColor(beside);
    host.click(button);
    EXPECT_EQ(host.picture().pixelColor(beside), ground) << "not for the mouse";
    host.key(Qt::Key_Tab);
    host.key(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_NE(host.picture().pixelColor(beside), ground);
}

TEST(Button, IsFilledWithTheAccentWhenItIsProminent) {
    WindowHost host(twoButtons);
    QQuickItem* button = host.item(QStringLiteral("second"));
    const QImage picture = host.picture();
    EXPECT_EQ(picture.pixelColor(button->mapToScene(QPointF(8, 16)).toPoint()).name().toStdString(),
              "#0a6cff");
    EXPECT_EQ(
        picture.pixelColor(host.item(QStringLiteral("first"))->mapToScene(QPointF(8, 13)).toPoint())
            .name()
            .toStdString(),
        "#ffffff");
}

TEST(Button, TellsItsNameAndRoleToAssistants) {
    WindowHost host(twoButtons);
    QAccessibleInterface* button =
        QAccessible::queryAccessibleInterface(host.item(QStringLiteral("first")));
    ASSERT_NE(button, nullptr);
    EXPECT_EQ(button->text(QAccessible::Name).toStdString(), "First");
    EXPECT_EQ(button->role(), QAccessible::Button);
    ASSERT_NE(button->actionInterface(), nullptr);
    button->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_EQ(host.root().property("presses").toInt(), 1);
}

} // namespace
} // namespace boxlift::test
