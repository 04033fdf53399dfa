#include "ui/desktop/sleep_inhibitor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QTest>

#include "ui/support/fake_inhibitors.h"
#include "ui/support/private_bus.h"

namespace boxlift::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const QString reason = QStringLiteral("Converting files");

class SleepInhibitorTest : public testing::Test {
protected:
    void SetUp() override {
        if (!bus.runs())
            GTEST_SKIP() << "no dbus-daemon";
    }

    void offerSessionManager() {
        ASSERT_TRUE(bus.offer(QStringLiteral("org.gnome.SessionManager"),
                              QStringLiteral("/org/gnome/SessionManager"), sessionManager));
    }
    void offerPowerManager() {
        ASSERT_TRUE(bus.offer(QStringLiteral("org.freedesktop.PowerManagement"),
                              QStringLiteral("/org/freedesktop/PowerManagement/Inhibit"),
                              powerManager));
    }
    void offerPortal() {
        ASSERT_TRUE(bus.offer(QStringLiteral("org.freedesktop.portal.Desktop"),
                              QStringLiteral("/org/freedesktop/portal/desktop"), portal));
        ASSERT_TRUE(bus.services().registerObject(QLatin1String(FakeInhibitPortal::handle),
                                                  &request, QDBusConnection::ExportAllContents));
    }

    PrivateBus bus;
    FakeSessionManager sessionManager;
    FakePowerManager powerManager;
    FakeInhibitPortal portal;
    FakePortalRequest request;
};

TEST_F(SleepInhibitorTest, AsksTheSessionManagerFirst) {
    offerSessionManager();
    offerPowerManager();
    offerPortal();
    SleepInhibitor inhibitor(bus.clients());
    inhibitor.hold(reason);
    EXPECT_THAT(sessionManager.reasons, IsEmpty()) << "does not wait";
    EXPECT_TRUE(QTest::qWaitFor([&] { return !sessionManager.reasons.isEmpty(); }));
    QTest::qWait(50);
    EXPECT_THAT(sessionManager.reasons, ElementsAre(reason));
    EXPECT_THAT(sessionManager.flags, ElementsAre(4U)) << "against suspending alone";
    EXPECT_THAT(powerManager.reasons, IsEmpty());
    EXPECT_THAT(portal.reasons, IsEmpty());
    inhibitor.release();
    EXPECT_TRUE(QTest::qWaitFor([&] { return !sessionManager.givenBack.isEmpty(); }));
    EXPECT_THAT(sessionManager.givenBack, ElementsAre(101U));
}

TEST_F(SleepInhibitorTest, AsksThePowerManagerOtherwise) {
    offerPowerManager();
    offerPortal();
    SleepInhibitor inhibitor(bus.clients());
    inhibitor.hold(reason);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !powerManager.reasons.isEmpty(); }));
    QTest::qWait(50);
    EXPECT_THAT(portal.reasons, IsEmpty());
    inhibitor.release();
    EXPECT_TRUE(QTest::qWaitFor([&] { return !powerManager.givenBack.isEmpty(); }));
    EXPECT_THAT(powerManager.givenBack, ElementsAre(7U));
}

TEST_F(SleepInhibitorTest, AsksThePortalLast) {
    offerPortal();
    SleepInhibitor inhibitor(bus.clients());
    inhibitor.hold(reason);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !portal.reasons.isEmpty(); }));
    EXPECT_THAT(portal.reasons, ElementsAre(reason));
    QTest::qWait(50);
    inhibitor.release();
    EXPECT_TRUE(QTest::qWaitFor([&] { return request.closings == 1; }));
}

TEST_F(SleepInhibitorTest, HoldsOnceAndAnewAfterARelease) {
    offerSessionManager();
    SleepInhibitor inhibitor(bus.clients());
    inhibitor.hold(reason);
    inhibitor.hold(reason);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !sessionManager.reasons.isEmpty(); }));
    QTest::qWait(50);
    EXPECT_EQ(sessionManager.reasons.size(), 1);
    inhibitor.release();
    inhibitor.release();
    inhibitor.hold(reason);
    EXPECT_TRUE(QTest::qWaitFor([&] { return sessionManager.reasons.size() == 2; }));
    EXPECT_THAT(sessionManager.givenBack, ElementsAre(101U));
}

TEST_F(SleepInhibitorTest, HandsBackWhatComesAfterTheRelease) {
    offerSessionManager();
    SleepInhibitor inhibitor(bus.clients());
    inhibitor.hold(reason);
    inhibitor.release();
    inhibitor.hold(reason);
    EXPECT_TRUE(QTest::qWaitFor([&] {
        return sessionManager.reasons.size() == 2 && sessionManager.givenBack.size() == 1;
    }));
    EXPECT_THAT(sessionManager.givenBack, ElementsAre(101U));
    inhibitor.release();
    EXPECT_TRUE(QTest::qWaitFor([&] { return sessionManager.givenBack.size() == 2; }));
    EXPECT_THAT(sessionManager.givenBack, ElementsAre(101U, 102U));
}

TEST_F(SleepInhibitorTest, LetsGoAtItsEnd) {
    offerSessionManager();
    {
        SleepInhibitor inhibitor(bus.clients());
        inhibitor.hold(reason);
        EXPECT_TRUE(QTest::qWaitFor([&] { return !sessionManager.reasons.isEmpty(); }));
        QTest::qWait(50);
    }
    EXPECT_TRUE(QTest::qWaitFor([&] { return !sessionManager.givenBack.isEmpty(); }));
}

TEST_F(SleepInhibitorTest, DoesNothingWhereNobodyAnswers) {
    SleepInhibitor inhibitor(bus.clients());
    inhibitor.hold(reason);
    QTest::qWait(50);
    inhibitor.release();
    // A service that comes later belongs to the next hold.
    offerSessionManager();
    QTest::qWait(50);
    EXPECT_THAT(sessionManager.reasons, IsEmpty());
    EXPECT_THAT(sessionManager.givenBack, IsEmpty());
    SleepInhibitor alone{QDBusConnection(QString())};
    alone.hold(reason);
    alone.release();
}

} // namespace
} // namespace boxlift::test
