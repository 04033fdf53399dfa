#include <gtest/gtest.h>

#include <QAccessible>
#include <QTest>

#include "ui/support/window_host.h"

namespace boxlift::test {
namespace {

constexpr char iconButton[] = R"(
    Item {
        property int presses: 0
        width: 400; height: 200
        IconButton {
            objectName: "button"
            x: 100; y: 50
            symbol: "xmark"
            help: "Remove it"
            onClicked: parent.presses += 1
        }
    })";

QObject* toolTip(WindowHost& host) {
    for (QObject* child : host.item(QStringLiteral("button"))->findChildren<QObject*>()) {
        if (child->inherits("QQuickToolTip"))
            return child;
    }
    return nullptr;
}

TEST(IconButton, IsPressedByMouseAndKeyboard) {
    WindowHost host(iconButton);
    host.click(host.item(QStringLiteral("button")));
    host.key(Qt::Key_Space);
    EXPECT_EQ(host.root().property("presses").toInt(), 2);
}

TEST(IconButton, TellsItsHelpToAssistants) {
    WindowHost host(iconButton);
    QAccessibleInterface* button =
        QAccessible::queryAccessibleInterface(host.item(QStringLiteral("button")));
    ASSERT_NE(button, nullptr);
    EXPECT_EQ(button->text(QAccessible::Name).toStdString(), "Remove it");
    EXPECT_EQ(button->role(), QAccessible::Button);
}

TEST(IconButton, ShowsItsHelpUnderTheMouseOnly) {
    WindowHost host(iconButton);
    QTest::mouseMove(&host.window(), QPoint(300, 150));
    EXPECT_EQ(toolTip(host), nullptr) << "made when it is wanted";
    host.hover(host.item(QStringLiteral("button")));
    ASSERT_NE(toolTip(host), nullptr);
    EXPECT_EQ(toolTip(host)->property("text").toString().toStdString(), "Remove it");
    EXPECT_TRUE(QTest::qWaitFor([&] { return toolTip(host)->property("opened").toBool(); }));
    QTest::mouseMove(&host.window(), QPoint(300, 150));
    EXPECT_TRUE(QTest::qWaitFor([&] { return toolTip(host) == nullptr; }));
}

TEST(IconButton, ShowsItsHelpWhenTheKeyboardGaveItTheFocus) {
    WindowHost host(iconButton);
    host.key(Qt::Key_Tab);
    ASSERT_EQ(host.focused().toStdString(), "button");
    ASSERT_NE(toolTip(host), nullptr);
    EXPECT_TRUE(QTest::qWaitFor([&] { return toolTip(host)->property("opened").toBool(); }));
}

} // namespace
} // namespace boxlift::test
