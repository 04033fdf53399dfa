#include <gtest/gtest.h>

#include <QAccessible>
#include <QTest>

#include "ui/support/window_host.h"

namespace boxlift::test {
namespace {

constexpr char pickers[] = R"(
    Item {
        property int activated: -1
        width: 480; height: 320
        ComboBox {
            objectName: "picker"
            x: 20; y: 20
            title: "Size"
            model: ["Original size", "1080p", "720p"]
            onActivated: index => parent.activated = index
        }
        ComboBox { objectName: "low"; x: 200; y: 290; title: "Other"; model: ["a", "b", "c", "d"] }
    })";

QObject* popup(WindowHost& host, const char* name) {
    return host.item(QLatin1String(name))->property("popup").value<QObject*>();
}

bool opens(WindowHost& host, const char* name) {
    return QTest::qWaitFor([&] { return popup(host, name)->property("opened").toBool(); });
}

bool closes(WindowHost& host, const char* name) {
    return QTest::qWaitFor([&] { return !popup(host, name)->property("visible").toBool(); });
}

/// One of the choices in the open picker; null when it is not made yet.
QQuickItem* choice(WindowHost& host, int index) {
    auto* list = popup(host, "picker")->property("contentItem").value<QQuickItem*>();
    QQuickItem* item = nullptr;
    QMetaObject::invokeMethod(list, "itemAtIndex", Q_RETURN_ARG(QQuickItem*, item),
                              Q_ARG(int, index));
    return item;
}

std::string displayed(WindowHost& host) {
    return host.item(QStringLiteral("picker"))->property("displayText").toString().toStdString();
}

TEST(ComboBox, PicksWithTheMouse) {
    WindowHost host(pickers);
    host.click(host.item(QStringLiteral("picker")));
    ASSERT_TRUE(opens(host, "picker"));
    QQuickItem* second = nullptr;
    ASSERT_TRUE(QTest::qWaitFor([&] { return (second = choice(host, 1)) != nullptr; }));
    EXPECT_EQ(second->property("text").toString().toStdString(), "1080p");
    host.click(second);
    EXPECT_TRUE(closes(host, "picker"));
    EXPECT_EQ(host.root().property("activated").toInt(), 1);
    EXPECT_EQ(displayed(host), "1080p");
}

TEST(ComboBox, PicksWithTheKeyboard) {
    WindowHost host(pickers);
    host.key(Qt::Key_Tab);
    ASSERT_EQ(host.focused().toStdString(), "picker");
    host.key(Qt::Key_Space);
    ASSERT_TRUE(opens(host, "picker"));
    host.key(Qt::Key_Down);
    host.key(Qt::Key_Down);
    host.key(Qt::Key_Return);
    EXPECT_TRUE(closes(host, "picker"));
    EXPECT_EQ(displayed(host), "720p");
}

TEST(ComboBox, ChangesNothingOnEscape) {
    WindowHost host(pickers);
    host.click(host.item(QStringLiteral("picker")));
    ASSERT_TRUE(opens(host, "picker"));
    host.key(Qt::Key_Down);
    host.key(Qt::Key_Escape);
    EXPECT_TRUE(closes(host, "picker"));
    EXPECT_EQ(host.root().property("activated").toInt(), -1);
    EXPECT_EQ(displayed(host), "Original size");
}

TEST(ComboBox, OpensUpwardsWhereThereIsNoRoomBelow) {
    WindowHost host(pickers);
    host.click(host.item(QStringLiteral("low")));
    ASSERT_TRUE(opens(host, "low"));
    auto* list = popup(host, "low")->property("contentItem").value<QQuickItem*>();
    EXPECT_LE(list->mapToScene(QPointF(0, list->height())).y(), 320);
    EXPECT_GE(list->mapToScene(QPointF(0, 0)).y(), 0);
}

TEST(ComboBox, TellsWhatItPicksToAssistants) {
    WindowHost host(pickers);
    QAccessibleInterface* picker =
        QAccessible::queryAccessibleInterface(host.item(QStringLiteral("picker")));
    ASSERT_NE(picker, nullptr);
    EXPECT_EQ(picker->role(), QAccessible::ComboBox);
    EXPECT_EQ(picker->text(QAccessible::Name).toStdString(), "Size");
    EXPECT_EQ(picker->text(QAccessible::Description).toStdString(), "Original size");
}

} // namespace
} // namespace boxlift::test
