#include "ui/file_drop_target.h"

#include <gtest/gtest.h>

#include <QMimeData>
#include <QQuickWindow>
#include <QSignalSpy>
#include <QTest>

#include "queue/queue.h"
#include "support/fake_chooser.h"
#include "support/fake_preferences.h"
#include "support/temp_folder.h"
#include "ui/support/fake_file_transfer.h"
#include "ui/support/private_bus.h"

namespace boxlift::test {
namespace {

class FileDropTargetTest : public testing::Test {
protected:
    void SetUp() override {
        target.setParentItem(window.contentItem());
        target.setSize({200, 200});
        window.resize(200, 200);
    }

    bool enter() {
        QDragEnterEvent event(QPoint(50, 50), actions, &data, Qt::LeftButton, {});
        QCoreApplication::sendEvent(&window, &event);
        return event.isAccepted();
    }

    bool move() {
        QDragMoveEvent event(QPoint(60, 60), actions, &data, Qt::LeftButton, {});
        QCoreApplication::sendEvent(&window, &event);
        return event.isAccepted();
    }

    /// The action that was taken; none when the drop was refused.
    Qt::DropAction drop() {
        QDropEvent event(QPointF(60, 60), actions, &data, Qt::LeftButton, {});
        QCoreApplication::sendEvent(&window, &event);
        return event.isAccepted() ? event.dropAction() : Qt::IgnoreAction;
    }

    QQuickWindow window;
    FileDropTarget target;
    QMimeData data;
    Qt::DropActions actions = Qt::CopyAction;
};

TEST_F(FileDropTargetTest, TakesADragWithAFileInIt) {
    data.setUrls({QUrl(QStringLiteral("https://example.org/a.mp4")),
                  QUrl(QStringLiteral("file:///videos/a.mp4"))});
    EXPECT_TRUE(enter());
    EXPECT_TRUE(target.isTargeted());
    EXPECT_TRUE(move());
}

TEST_F(FileDropTargetTest, TakesFilesThatNameThisMachine) {
    data.setUrls({QUrl(QStringLiteral("file://localhost/videos/a.mp4"))});
    EXPECT_TRUE(enter());
}

TEST_F(FileDropTargetTest, RefusesDragsWithoutFiles) {
    EXPECT_FALSE(enter());
    data.setText(QStringLiteral("file:///videos/a.mp4"));
    EXPECT_FALSE(enter());
    data.setUrls({QUrl(QStringLiteral("https://example.org/a.mp4")),
                  QUrl(QStringLiteral("file://elsewhere/a.mp4"))});
    EXPECT_FALSE(enter());
    EXPECT_FALSE(target.isTargeted());
}

TEST_F(FileDropTargetTest, LosesTheHighlightWhenTheDragLeaves) {
    data.setUrls({QUrl(QStringLiteral("file:///videos/a.mp4"))});
    QSignalSpy changes(&target, &FileDropTarget::targetedChanged);
    enter();
    QDragLeaveEvent leave;
    QCoreApplication::sendEvent(&window, &leave);
    EXPECT_FALSE(target.isTargeted());
    EXPECT_EQ(changes.count(), 2);
}

TEST_F(FileDropTargetTest, HandsOverAllThatTheDropHolds) {
    const QList<QUrl> urls{QUrl(QStringLiteral("file:///videos/a%FFb.mp4")),
                           QUrl(QStringLiteral("https://example.org/a.mp4"))};
    data.setUrls(urls);
    QSignalSpy drops(&target, &FileDropTarget::dropped);
    enter();
    EXPECT_EQ(drop(), Qt::CopyAction);
    ASSERT_EQ(drops.count(), 1);
    EXPECT_EQ(drops.front().front().value<QList<QUrl>>(), urls);
    EXPECT_FALSE(target.isTargeted());
}

TEST_F(FileDropTargetTest, KeepsEveryByteOfAName) {
    data.setData(QStringLiteral("text/uri-list"), "file:///videos/a%FFb.mp4\r\n");
    QSignalSpy drops(&target, &FileDropTarget::dropped);
    enter();
    drop();
    ASSERT_EQ(drops.count(), 1);
    EXPECT_EQ(drops.front().front().value<QList<QUrl>>().front().toEncoded().toStdString(),
              "file:///videos/a%FFb.mp4");
}

TEST_F(FileDropTargetTest, AcceptsADropThatHoldsNothing) {
    QSignalSpy drops(&target, &FileDropTarget::dropped);
    QDropEvent event(QPointF(60, 60), actions, &data, Qt::LeftButton, {});
    QCoreApplication::sendEvent(&target, &event);
    EXPECT_TRUE(event.isAccepted());
    ASSERT_EQ(drops.count(), 1);
    EXPECT_TRUE(drops.front().front().value<QList<QUrl>>().isEmpty());
}

TEST_F(FileDropTargetTest, NeedsNothingMoreOfItsSourceAtTheDrop) {
    data.setUrls({QUrl(QStringLiteral("file:///videos/a.mp4"))});
    QSignalSpy drops(&target, &FileDropTarget::dropped);
    enter();
    data.clear();
    EXPECT_EQ(drop(), Qt::CopyAction);
    ASSERT_EQ(drops.count(), 1);
    EXPECT_EQ(drops.front().front().value<QList<QUrl>>().size(), 1);
}

TEST_F(FileDropTargetTest, NeverHasFilesMoved) {
    data.setUrls({QUrl(QStringLiteral("file:///videos/a.mp4"))});
    actions = Qt::CopyAction | Qt::MoveAction;
    enter();
    EXPECT_EQ(drop(), Qt::CopyAction);
}

class PortalDropTest : public FileDropTargetTest {
protected:
    void SetUp() override {
        FileDropTargetTest::SetUp();
        if (!bus.runs())
            GTEST_SKIP() << "no dbus-daemon";
        target.setBus(bus.clients());
        transfer.key = QStringLiteral("key of 12");
        transfer.files = {QStringLiteral("/videos/a b.mov"), QStringLiteral("/videos/é.mp4")};
        data.setData(QStringLiteral("application/vnd.portal.filetransfer"),
                     QByteArray("key of 12\0", 10));
    }
    void offerPortal() {
        ASSERT_TRUE(bus.offer(QStringLiteral("org.freedesktop.portal.Documents"),
                              QStringLiteral("/org/freedesktop/portal/documents"), transfer));
    }
    std::vector<std::string> droppedFiles() {
        const QSignalSpy drops(&target, &FileDropTarget::dropped);
        EXPECT_TRUE(enter());
        EXPECT_EQ(drop(), Qt::CopyAction);
        EXPECT_TRUE(QTest::qWaitFor([&] { return drops.count() == 1; }));
        std::vector<std::string> files;
        for (const QUrl& url : drops.value(0).value(0).value<QList<QUrl>>())
            files.push_back(url.toEncoded().toStdString());
        return files;
    }

    /// What the list, with the real engine behind it, says of the one file that is dropped.
    std::string failureOfTheDrop() {
        Queue queue({converterEngine(), chooser, preferences, {{folder.path()}, folder.path()}});
        QObject::connect(&target, &FileDropTarget::dropped, &queue,
                         [&](const QList<QUrl>& urls) { queue.handleDrop(urls); });
        enter();
        drop();
        const Failed* failure = nullptr;
        EXPECT_TRUE(QTest::qWaitFor([&] {
            failure = queue.jobs().empty() ? nullptr
                                           : std::get_if<Failed>(&queue.jobs().front()->state());
            return failure != nullptr;
        }));
        EXPECT_EQ(queue.jobs().size(), 1U);
        return failure ? failure->message : std::string();
    }

    PrivateBus bus;
    FakeFileTransfer transfer;
    FakeChooser chooser;
    FakePreferences preferences;
    const TempFolder folder;
};

TEST_F(PortalDropTest, AsksThePortalForTheFiles) {
    offerPortal();
    EXPECT_EQ(droppedFiles(),
              (std::vector<std::string>{"file:///videos/a%20b.mov", "file:///videos/%C3%A9.mp4"}));
}

TEST_F(PortalDropTest, PrefersThePortalToAddressesOfASandbox) {
    offerPortal();
    data.setUrls({QUrl(QStringLiteral("file:///sandbox/a.mov"))});
    EXPECT_EQ(droppedFiles().size(), 2U);
}

TEST_F(PortalDropTest, TakesTheAddressesWhereThereIsNoPortal) {
    data.setUrls({QUrl(QStringLiteral("file:///sandbox/a.mov"))});
    EXPECT_EQ(droppedFiles(), std::vector<std::string>{"file:///sandbox/a.mov"});
}

TEST_F(PortalDropTest, TakesTheAddressesWhenThePortalDoesNotKnowTheKey) {
    offerPortal();
    transfer.key = QStringLiteral("another");
    data.setUrls({QUrl(QStringLiteral("file:///sandbox/a.mov"))});
    EXPECT_EQ(droppedFiles(), std::vector<std::string>{"file:///sandbox/a.mov"});
}

constexpr const char* cannotOpen = "macOS can't open this file. It may be damaged or in a format "
                                   "AVFoundation doesn't support.";

TEST_F(PortalDropTest, SaysThatAFileOfTheSandboxAloneCannotBeOpened) {
    data.setUrls({QUrl::fromLocalFile(folder.path().c_str() + QStringLiteral("/gone/a.mov"))});
    EXPECT_EQ(failureOfTheDrop(), cannotOpen);
}

TEST_F(PortalDropTest, SaysThatAFileOfThePortalThatIsNotThereCannotBeOpened) {
    offerPortal();
    transfer.files = {folder.path().c_str() + QStringLiteral("/gone/b.mov")};
    EXPECT_EQ(failureOfTheDrop(), cannotOpen);
}

} // namespace
} // namespace boxlift::test
