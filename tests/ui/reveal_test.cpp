#include "ui/reveal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QTest>

#include "ui/support/fake_file_manager.h"
#include "ui/support/private_bus.h"
#include "ui/support/url_catcher.h"

namespace boxlift::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const QUrl file(QStringLiteral("file:///videos/a%20b.mp4"));

TEST(Reveal, AsksTheFileManager) {
    PrivateBus bus;
    if (!bus.runs())
        GTEST_SKIP() << "no dbus-daemon";
    FakeFileManager manager;
    ASSERT_TRUE(bus.offer(QStringLiteral("org.freedesktop.FileManager1"),
                          QStringLiteral("/org/freedesktop/FileManager1"), manager));
    const UrlCatcher opened;
    Reveal reveal(bus.clients());
    reveal.show(file);
    reveal.show(QUrl(QStringLiteral("file:///videos/folder/")));
    reveal.show(QUrl(QStringLiteral("file:///videos/it%27s%20raw%FF%23.mp4")));
    EXPECT_THAT(manager.shown, IsEmpty()) << "does not wait";
    EXPECT_TRUE(QTest::qWaitFor([&] { return manager.shown.size() == 3; }));
    EXPECT_THAT(manager.shown, ElementsAre(QStringLiteral("file:///videos/a%20b.mp4"),
                                           QStringLiteral("file:///videos/folder"),
                                           QStringLiteral("file:///videos/it's%20raw%FF%23.mp4")));
    QTest::qWait(50);
    EXPECT_THAT(opened.caught, IsEmpty());
}

TEST(Reveal, OpensTheParentFolderWhereNoFileManagerAnswers) {
    const PrivateBus bus;
    if (!bus.runs())
        GTEST_SKIP() << "no dbus-daemon";
    const UrlCatcher opened;
    Reveal reveal(bus.clients());
    reveal.show(file);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !opened.caught.isEmpty(); }));
    EXPECT_THAT(opened.caught, ElementsAre(QUrl(QStringLiteral("file:///videos"))));
}

TEST(Reveal, OpensTheParentFolderWhereThereIsNoBus) {
    const UrlCatcher opened;
    Reveal reveal{QDBusConnection(QString())};
    reveal.show(file);
    EXPECT_THAT(opened.caught, ElementsAre(QUrl(QStringLiteral("file:///videos"))));
}

TEST(Reveal, KnowsTheParentOfFilesAndFolders) {
    const auto parent = [](const char* url) {
        return Reveal::parentFolder(QUrl(QLatin1String(url))).toEncoded().toStdString();
    };
    EXPECT_EQ(parent("file:///videos/a.mp4"), "file:///videos");
    EXPECT_EQ(parent("file:///videos/folder/"), "file:///videos");
    EXPECT_EQ(parent("file:///raw%FFfolder/a.mp4"), "file:///raw%FFfolder");
    EXPECT_EQ(parent("file:///a.mp4"), "file:///");
    EXPECT_EQ(parent("file:///"), "file:///");
}

} // namespace
} // namespace boxlift::test
