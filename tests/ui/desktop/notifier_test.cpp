#include "ui/desktop/notifier.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QTest>

#include "ui/support/fake_notifications.h"
#include "ui/support/private_bus.h"

namespace boxlift::test {
namespace {

using testing::ElementsAre;

class NotifierTest : public testing::Test {
protected:
    void SetUp() override {
        if (!bus.runs())
            GTEST_SKIP() << "no dbus-daemon";
        ASSERT_TRUE(bus.offer(QStringLiteral("org.freedesktop.Notifications"),
                              QStringLiteral("/org/freedesktop/Notifications"), notifications));
    }
    void tell(Notifier& notifier, const QString& body) {
        const auto before = notifications.bodies.size();
        notifier.tell(QStringLiteral("Conversion finished"), body);
        EXPECT_TRUE(QTest::qWaitFor([&] { return notifications.bodies.size() == before + 1; }));
        QTest::qWait(50);
    }

    PrivateBus bus;
    FakeNotifications notifications;
};

TEST_F(NotifierTest, ShowsWhatItIsTold) {
    Notifier notifier(bus.clients());
    tell(notifier, QStringLiteral("3 files are done."));
    EXPECT_THAT(notifications.summaries, ElementsAre(QStringLiteral("Conversion finished")));
    EXPECT_THAT(notifications.bodies, ElementsAre(QStringLiteral("3 files are done.")));
}

TEST_F(NotifierTest, PutsANewOneInPlaceOfTheLast) {
    Notifier notifier(bus.clients());
    tell(notifier, QStringLiteral("1 file is done."));
    tell(notifier, QStringLiteral("2 files are done."));
    EXPECT_THAT(notifications.replaced, ElementsAre(0U, 41U));
}

TEST_F(NotifierTest, TellsOfAClick) {
    Notifier notifier(bus.clients());
    const QSignalSpy clicks(&notifier, &Notifier::activated);
    tell(notifier, QStringLiteral("1 file is done."));
    FakeNotifications::act(bus.services(), 99, QStringLiteral("default"));
    FakeNotifications::act(bus.services(), 41, QStringLiteral("other"));
    QTest::qWait(50);
    EXPECT_EQ(clicks.count(), 0);
    FakeNotifications::act(bus.services(), 41, QStringLiteral("default"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return clicks.count() == 1; }));
}

TEST(Notifier, DoesWithoutABus) {
    Notifier notifier{QDBusConnection(QString())};
    notifier.tell(QStringLiteral("Conversion finished"), QStringLiteral("1 file is done."));
}

} // namespace
} // namespace boxlift::test
