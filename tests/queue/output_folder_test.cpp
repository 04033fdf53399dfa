#include "queue/output_folder.h"

#include "queue/file_url.h"
#include "queue/property_mirror.h"
#include "queue/queue_fixture.h"

namespace boxlift {
namespace {

namespace fs = std::filesystem;
using test::FakePreferences;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

const UserFolders userFolders{.movies = {"/home/me/Videos", "/srv/Videos"}, .home = "/home/me"};

TEST(OutputFolderTest, IsTheFirstFolderForFilmsAtTheFirstStart) {
    FakePreferences preferences;
    const OutputFolder folder(preferences, userFolders);

    EXPECT_EQ(folder.path(), "/home/me/Videos");
    EXPECT_THAT(preferences.writes, IsEmpty());
}

TEST(OutputFolderTest, IsHomeWhereThereIsNoFolderForFilms) {
    FakePreferences preferences;
    const OutputFolder folder(preferences, {.movies = {}, .home = "/home/me"});

    EXPECT_EQ(folder.path(), "/home/me");
    EXPECT_THAT(preferences.writes, IsEmpty());
}

TEST(OutputFolderTest, IsTheRememberedOneWhetherItExistsOrNot) {
    FakePreferences preferences;
    preferences.values["outputDir"] = "/nowhere/at all";
    const OutputFolder folder(preferences, userFolders);

    EXPECT_EQ(folder.path(), "/nowhere/at all");
    EXPECT_THAT(preferences.writes, IsEmpty());
}

TEST(OutputFolderTest, IsRememberedAsAPlainPathAtEachAssignment) {
    FakePreferences preferences;
    OutputFolder folder(preferences, userFolders);
    folder.set("/a b");
    folder.set("/caf\xE9");
    folder.set("/caf\xE9");

    EXPECT_EQ(folder.path(), "/caf\xE9");
    EXPECT_THAT(preferences.writes,
                ElementsAre(Pair("outputDir", "/a b"), Pair("outputDir", "/caf\xE9"),
                            Pair("outputDir", "/caf\xE9")));
    EXPECT_EQ(OutputFolder(preferences, userFolders).path(), "/caf\xE9");
}

class QueueOutputFolder : public test::QueueFixture {};

TEST_F(QueueOutputFolder, IsNotWrittenUntilTheUserChoosesOne) {
    addDone("a.mov");

    EXPECT_EQ(queue().outputDir(), outputDir());
    EXPECT_EQ(queue().property("outputDir"), fileUrl(outputDir()));
    EXPECT_THAT(m_preferences.writes, IsEmpty());
}

TEST_F(QueueOutputFolder, IsChosenFromTheCurrentOneOn) {
    m_chooser.folder = fileUrl("/chosen here");
    const test::PropertyMirror mirror(queue());
    queue().chooseOutputFolder();

    EXPECT_EQ(m_chooser.prompts, QStringList("Choose"));
    EXPECT_THAT(m_chooser.starts, ElementsAre(fileUrl(outputDir())));
    EXPECT_EQ(queue().outputDir(), "/chosen here");
    EXPECT_THAT(m_preferences.writes, ElementsAre(Pair("outputDir", "/chosen here")));
    EXPECT_EQ(mirror.outdated(), QStringList());
}

TEST_F(QueueOutputFolder, StaysWhenTheChoiceIsCancelled) {
    const QSignalSpy spy(&queue(), &Queue::outputDirChanged);
    queue().chooseOutputFolder();

    EXPECT_EQ(queue().outputDir(), outputDir());
    EXPECT_EQ(spy.count(), 0);
    EXPECT_THAT(m_preferences.writes, IsEmpty());
}

TEST_F(QueueOutputFolder, CanBeSetAsAProperty) {
    queue().setProperty("outputDir", fileUrl("/caf\xE9"));
    EXPECT_EQ(queue().outputDir(), "/caf\xE9");
    EXPECT_THAT(m_preferences.writes, ElementsAre(Pair("outputDir", "/caf\xE9")));

    queue().setProperty("outputDir", QUrl("https://example.com/"));
    EXPECT_EQ(queue().outputDir(), "/caf\xE9");
}

TEST_F(QueueOutputFolder, IsRememberedAgainWhenTheSameOneIsChosen) {
    queue().setOutputDir(outputDir());

    EXPECT_THAT(m_preferences.writes, ElementsAre(Pair("outputDir", outputDir().native())));
}

TEST_F(QueueOutputFolder, IsMadeAgainByTheNextConversion) {
    queue().setOutputDir(m_folder.path() / "gone" / "deleted");
    fs::create_directories(queue().outputDir());
    fs::remove_all(m_folder.path() / "gone");
    addDone("a.mov");

    EXPECT_TRUE(fs::exists(m_folder.path() / "gone" / "deleted" / "a.mp4"));
}

TEST_F(QueueOutputFolder, IsMadeAgainWhenItIsRemovedDuringARun) {
    test::Gate gate;
    holdAt("a.mov", gate);
    addReady("a.mov");
    addReady("b.mov");
    queue().startAll();
    ASSERT_TRUE(spinUntilReached(gate));
    fs::remove_all(outputDir());
    gate.open();
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_TRUE(fs::exists(output("b.mp4")));
}

} // namespace
} // namespace boxlift
