#include "ui/desktop/launcher_progress.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDBusConnectionInterface>
#include <QTest>

#include "ui/support/private_bus.h"

namespace boxlift::test {
namespace {

using testing::ElementsAre;

/// A launcher that remembers what it was told.
class FakeLauncher : public QObject {
    Q_OBJECT

public:
    QStringList entries;
    QList<double> fractions;
    QList<bool> visible;

public slots:
    void take(const QString& entry, const QVariantMap& properties) {
        entries += entry;
        fractions += properties.value(QStringLiteral("progress")).toDouble();
        visible += properties.value(QStringLiteral("progress-visible")).toBool();
    }
};

class LauncherProgressTest : public testing::Test {
protected:
    void SetUp() override {
        if (!bus.runs())
            GTEST_SKIP() << "no dbus-daemon";
        ASSERT_TRUE(bus.services().connect(
            QString(), QString(), QStringLiteral("com.canonical.Unity.LauncherEntry"),
            QStringLiteral("Update"), &launcher, SLOT(take(QString, QVariantMap))));
        // Whatever is asked after the connection is answered after it.
        ASSERT_TRUE(bus.services().interface()->isServiceRegistered(bus.clients().baseService()));
    }
    bool waitFor(int updates) {
        return QTest::qWaitFor([&] { return launcher.visible.size() == updates; });
    }

    PrivateBus bus;
    FakeLauncher launcher;
};

TEST_F(LauncherProgressTest, ShowsEachPercentOnce) {
    LauncherProgress progress(bus.clients());
    progress.show(0);
    progress.show(0.001);
    progress.show(0.42);
    progress.show(0.4201);
    EXPECT_TRUE(waitFor(2));
    QTest::qWait(50);
    EXPECT_THAT(launcher.fractions, ElementsAre(0, 0.42));
    EXPECT_THAT(launcher.visible, ElementsAre(true, true));
    EXPECT_EQ(launcher.entries.constFirst().toStdString(),
              "application://org.boxlift.Boxlift.desktop");
}

TEST_F(LauncherProgressTest, GoesWhenItIsClearedAndWithItsOwner) {
    {
        LauncherProgress progress(bus.clients());
        progress.show(0.5);
        progress.clear();
        progress.clear();
        progress.show(0.5);
    }
    EXPECT_TRUE(waitFor(4));
    EXPECT_THAT(launcher.visible, ElementsAre(true, false, true, false));
}

TEST_F(LauncherProgressTest, SaysNothingBeforeItHasShownAnything) {
    { LauncherProgress progress(bus.clients()); }
    QTest::qWait(50);
    EXPECT_TRUE(launcher.visible.isEmpty());
}

TEST(LauncherProgress, DoesWithoutABus) {
    LauncherProgress progress{QDBusConnection(QString())};
    progress.show(0.5);
    progress.clear();
}

} // namespace
} // namespace boxlift::test

#include "launcher_progress_test.moc"
