#include "ui/shell.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QFileOpenEvent>
#include <QLabel>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSettings>
#include <QTest>
#include <QTimer>

#include "support/temp_folder.h"
#include "ui/files_panel.h"
#include "ui/support/find_item.h"
#include "ui/support/font_size.h"

namespace boxlift::test {
namespace {

class ShellTest : public testing::Test {
protected:
    ShellTest() {
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope,
                           QString::fromStdString(folder.path().string()));
    }

    void SetUp() override {
        window = shell.openWindow();
        ASSERT_NE(window, nullptr);
        ASSERT_EQ(preparations, 0) << "nothing has been drawn yet";
        ASSERT_TRUE(QTest::qWaitForWindowActive(window));
    }

    QQuickItem* item(const char* name) const {
        return findItem(window->contentItem(), QLatin1String(name), Sight::any);
    }

    void click(QQuickItem* item) {
        const QPointF centre(item->width() / 2, item->height() / 2);
        QTest::mouseClick(window, Qt::LeftButton, {}, item->mapToScene(centre).toPoint());
    }

    QQuickItem* menuTitle() const {
        const auto* bar = window->property("menuBar").value<QQuickItem*>();
        return bar->property("contentItem").value<QQuickItem*>()->childItems().constFirst();
    }

    /// By a click on its title, which is there before the menu.
    bool opensMenu(QQuickItem*& entry) {
        EXPECT_EQ(menuTitle()->property("text").toString().toStdString(), "File");
        if (!QTest::qWaitFor([&] { return menuTitle()->property("menu").value<QObject*>(); }))
            return false;
        EXPECT_EQ(menuTitle()->property("text").toString().toStdString(), "File");
        QTest::qWait(50);
        click(menuTitle());
        return QTest::qWaitFor([&] {
            entry = window->findChild<QQuickItem*>(QStringLiteral("menuAddFiles"));
            return entry && entry->isVisible();
        });
    }

    /// The message of the panel that opens, which is then closed.
    void expectPanel(QString& message) {
        look.callOnTimeout([this, &message] {
            auto* panel = qobject_cast<FilesPanel*>(QApplication::activeModalWidget());
            if (!panel)
                return;
            look.stop();
            message = panel->findChild<QLabel*>(QStringLiteral("message"))->text();
            color = panel->palette().color(QPalette::Window);
            panel->reject();
        });
        look.start(50);
    }

    TempFolder folder;
    QTimer look;
    int preparations = 0;
    Shell shell{
        Engine{.analyze = [](const std::filesystem::path&, std::stop_token) { return MediaInfo(); },
               .convert = [](const auto&...) { return Mode::boxlift; },
               .prepare = [this] { ++preparations; }}};
    QQuickWindow* window = nullptr;
    /// Of the panel.
    QColor color;
};

TEST_F(ShellTest, OpensOneWindowInFront) {
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(window->isActive());
    EXPECT_EQ(window->title().toStdString(), "Boxlift");
}

TEST_F(ShellTest, HasRoomForTheContentAtLeast) {
    EXPECT_EQ(window->minimumWidth(), 780);
    const auto* content = item("dropTarget")->parentItem();
    EXPECT_EQ(content->width(), 780);
    EXPECT_EQ(content->height(), 520);
    EXPECT_EQ(window->size(), window->minimumSize());
}

TEST_F(ShellTest, ShowsTheOneQueue) {
    shell.queue().addPaths({writeFile(folder.path() / "a.mov")});
    EXPECT_TRUE(QTest::qWaitFor([&] { return item("jobList")->isVisible(); }));
}

TEST_F(ShellTest, OpensThePanelWithItsKeys) {
    QString message;
    expectPanel(message);
    QTest::keySequence(window, QKeySequence::Open);
    EXPECT_EQ(message.toStdString(), "Choose video or audio files to convert");
    EXPECT_EQ(color, window->color());
}

TEST_F(ShellTest, OpensThePanelFromTheMenu) {
    QQuickItem* entry = nullptr;
    ASSERT_TRUE(opensMenu(entry));
    EXPECT_EQ(entry->property("text").toString().toStdString(), "Add Files…");
    EXPECT_EQ(entry->property("keys").toString().toStdString(), "Ctrl+O");
    QTest::qWait(50);
    QString message;
    expectPanel(message);
    click(entry);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !message.isEmpty(); }));
    EXPECT_FALSE(entry->isVisible());
    QTest::mouseMove(window, QPoint(400, 300));
    EXPECT_TRUE(QTest::qWaitFor([&] { return !menuTitle()->property("highlighted").toBool(); }));
    EXPECT_TRUE(opensMenu(entry)) << "again";
}

TEST_F(ShellTest, ClosesTheMenuWithEscape) {
    QQuickItem* entry = nullptr;
    ASSERT_TRUE(opensMenu(entry));
    QTest::keyClick(window, Qt::Key_Escape);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !entry->isVisible(); }));
    QTest::mouseMove(window, QPoint(400, 300));
    EXPECT_TRUE(QTest::qWaitFor([&] { return !menuTitle()->property("highlighted").toBool(); }));
    EXPECT_TRUE(opensMenu(entry)) << "again";
}

TEST_F(ShellTest, HasControlsThatTabReaches) {
    const auto isThere = [&] {
        const QQuickItem* focus = window->activeFocusItem();
        return focus && focus->objectName() == QLatin1String("addFiles");
    };
    constexpr int most = 12;
    for (int i = 0; i < most && !isThere(); ++i)
        QTest::keyClick(window, Qt::Key_Tab);
    EXPECT_TRUE(isThere());
}

TEST_F(ShellTest, TakesFilesThatTheDesktopHandsOver) {
    const auto path = writeFile(folder.path() / "a.mov");
    QFileOpenEvent event(QUrl::fromLocalFile(QString::fromStdString(path.string())));
    QCoreApplication::sendEvent(qApp, &event);
    ASSERT_EQ(shell.queue().jobs().size(), 1U);
    EXPECT_EQ(shell.queue().jobs().front()->path(), path);
}

TEST_F(ShellTest, GrowsItsSmallestSizeWithTheSystemsText) {
    const int bars = window->minimumHeight() - 520;
    EXPECT_EQ(window->minimumWidth(), 780);
    const FontSize large(30);
    EXPECT_EQ(window->minimumWidth(), 2 * 780);
    EXPECT_EQ(window->minimumHeight(), 2 * (520 + bars));
}

TEST_F(ShellTest, PreparesTheEngineOnceItHasBeenSeen) {
    EXPECT_TRUE(QTest::qWaitFor([&] { return preparations > 0; }));
    window->update();
    QTest::qWait(50);
    EXPECT_EQ(preparations, 1);
}

TEST_F(ShellTest, ShowsItsIconInTheTitleBar) {
    EXPECT_TRUE(QTest::qWaitFor(
        [] { return QGuiApplication::windowIcon().availableSizes().contains(QSize(16, 16)); }));
}

} // namespace
} // namespace boxlift::test
