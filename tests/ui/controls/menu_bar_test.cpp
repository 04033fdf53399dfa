#include <gtest/gtest.h>

#include <QAccessible>
#include <QTest>

#include "ui/support/window_host.h"

namespace boxlift::test {
namespace {

constexpr char menuBar[] = R"(
    Item {
        property int added: 0
        width: 480; height: 300
        MenuBar {
            objectName: "bar"
            width: parent.width
            Menu {
                objectName: "menu"
                title: "File"
                MenuItem { objectName: "add"; text: "Add"; keys: "Ctrl+O"; onTriggered: added += 1 }
                MenuItem { objectName: "quit"; text: "Quit" }
            }
        }
    })";

QQuickItem* title(WindowHost& host) {
    auto* content = host.item(QStringLiteral("bar"))->property("contentItem").value<QQuickItem*>();
    return content->childItems().constFirst();
}

TEST(MenuBar, OpensItsMenuAndTriggersAnItemWithTheMouse) {
    WindowHost host(menuBar);
    EXPECT_EQ(title(host)->property("text").toString().toStdString(), "File");
    host.click(title(host));
    ASSERT_TRUE(QTest::qWaitFor([&] { return host.shown(QStringLiteral("add")) != nullptr; }));
    QTest::qWait(50);
    host.click(host.shown(QStringLiteral("add")));
    EXPECT_EQ(host.root().property("added").toInt(), 1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return host.shown(QStringLiteral("add")) == nullptr; }));
}

TEST(MenuBar, IsUsedWithTheKeyboard) {
    WindowHost host(menuBar);
    host.click(title(host));
    ASSERT_TRUE(QTest::qWaitFor([&] { return host.shown(QStringLiteral("add")) != nullptr; }));
    host.key(Qt::Key_Down);
    host.key(Qt::Key_Return);
    EXPECT_EQ(host.root().property("added").toInt(), 1);
}

TEST(MenuBar, ClosesItsMenuOnEscape) {
    WindowHost host(menuBar);
    host.click(title(host));
    ASSERT_TRUE(QTest::qWaitFor([&] { return host.shown(QStringLiteral("add")) != nullptr; }));
    host.key(Qt::Key_Escape);
    EXPECT_TRUE(QTest::qWaitFor([&] { return host.shown(QStringLiteral("add")) == nullptr; }));
    EXPECT_EQ(host.root().property("added").toInt(), 0);
}

TEST(MenuBar, TellsItsItemsToAssistants) {
    WindowHost host(menuBar);
    host.click(title(host));
    ASSERT_TRUE(QTest::qWaitFor([&] { return host.shown(QStringLiteral("add")) != nullptr; }));
    QAccessibleInterface* item =
        QAccessible::queryAccessibleInterface(host.shown(QStringLiteral("add")));
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->role(), QAccessible::MenuItem);
    EXPECT_EQ(item->text(QAccessible::Name).toStdString(), "Add");
}

} // namespace
} // namespace boxlift::test
