#include "ui/color_scheme.h"

#include <memory>

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QPalette>
#include <QSignalSpy>
#include <QTest>

#include "ui/support/fake_portal.h"
#include "ui/support/private_bus.h"

namespace boxlift::test {
namespace {

constexpr unsigned int noPreference = 0;
constexpr unsigned int preferDark = 1;
constexpr unsigned int preferLight = 2;

QPalette darkPalette() {
    return QPalette(QColor(40, 40, 44));
}

QPalette lightPalette() {
    return QPalette(QColor(240, 240, 244));
}

class ColorSchemeTest : public testing::Test {
protected:
    void SetUp() override { QGuiApplication::setPalette(lightPalette()); }
};

class ColorSchemePortal : public ColorSchemeTest {
protected:
    void SetUp() override {
        ColorSchemeTest::SetUp();
        if (!bus.runs())
            GTEST_SKIP() << "no dbus-daemon";
        ASSERT_TRUE(bus.offer(QStringLiteral("org.freedesktop.portal.Desktop"),
                              QStringLiteral("/org/freedesktop/portal/desktop"), portal));
    }

    PrivateBus bus;
    FakePortal portal;
};

TEST_F(ColorSchemeTest, FollowsThePaletteWhereThereIsNoBus) {
    const ColorScheme scheme{QDBusConnection(QString())};
    QSignalSpy changes(&scheme, &ColorScheme::darkChanged);
    EXPECT_FALSE(scheme.dark());
    QGuiApplication::setPalette(darkPalette());
    EXPECT_TRUE(scheme.dark());
    QGuiApplication::setPalette(lightPalette());
    EXPECT_FALSE(scheme.dark());
    EXPECT_EQ(changes.count(), 2);
}

TEST_F(ColorSchemeTest, StartsDarkOnADarkPalette) {
    QGuiApplication::setPalette(darkPalette());
    EXPECT_TRUE(ColorScheme{QDBusConnection(QString())}.dark());
}

TEST_F(ColorSchemeTest, FollowsThePaletteWhereThereIsNoPortal) {
    const PrivateBus bus;
    if (!bus.runs())
        GTEST_SKIP() << "no dbus-daemon";
    const ColorScheme scheme(bus.clients());
    QTest::qWait(100);
    EXPECT_FALSE(scheme.dark());
    QGuiApplication::setPalette(darkPalette());
    EXPECT_TRUE(scheme.dark());
}

TEST_F(ColorSchemePortal, IsDarkWhenThePortalSaysSo) {
    portal.colorScheme = preferDark;
    const ColorScheme scheme(bus.clients());
    EXPECT_FALSE(scheme.dark()) << "does not wait for the answer";
    EXPECT_TRUE(QTest::qWaitFor([&] { return scheme.dark(); }));
}

TEST_F(ColorSchemePortal, IsLightOnADarkPaletteWhenThePortalSaysSo) {
    QGuiApplication::setPalette(darkPalette());
    portal.colorScheme = preferLight;
    const ColorScheme scheme(bus.clients());
    EXPECT_TRUE(QTest::qWaitFor([&] { return !scheme.dark(); }));
    QGuiApplication::setPalette(lightPalette());
    QGuiApplication::setPalette(darkPalette());
    EXPECT_FALSE(scheme.dark());
}

TEST_F(ColorSchemePortal, FollowsTheUsersChanges) {
    const ColorScheme scheme(bus.clients());
    QTest::qWait(100);
    ASSERT_FALSE(scheme.dark());
    FakePortal::tellColorScheme(bus.services(), preferDark);
    EXPECT_TRUE(QTest::qWaitFor([&] { return scheme.dark(); }));
    FakePortal::tellColorScheme(bus.services(), preferLight);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !scheme.dark(); }));
}

TEST_F(ColorSchemePortal, GoesBackToThePaletteWhenThePreferenceIsGone) {
    portal.colorScheme = preferDark;
    const ColorScheme scheme(bus.clients());
    ASSERT_TRUE(QTest::qWaitFor([&] { return scheme.dark(); }));
    FakePortal::tellColorScheme(bus.services(), noPreference);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !scheme.dark(); }));
}

TEST_F(ColorSchemePortal, LeavesOtherSettingsAlone) {
    const ColorScheme scheme(bus.clients());
    QTest::qWait(100);
    FakePortal::tell(bus.services(), QStringLiteral("org.freedesktop.appearance"),
                     QStringLiteral("contrast"), preferDark);
    FakePortal::tell(bus.services(), QStringLiteral("org.gnome.desktop"),
                     QStringLiteral("color-scheme"), preferDark);
    QTest::qWait(200);
    EXPECT_FALSE(scheme.dark());
}

} // namespace
} // namespace boxlift::test
