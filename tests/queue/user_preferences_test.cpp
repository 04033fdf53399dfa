#include "queue/user_preferences.h"

#include <filesystem>
#include <string>

#include <QByteArray>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "queue/output_folder.h"
#include "support/temp_folder.h"

namespace boxlift {
namespace {

namespace fs = std::filesystem;
using test::writeFile;
using testing::ElementsAre;
using testing::HasSubstr;

/// The user's home is a temporary folder. One for all cases: Qt asks but once where things are.
class UserPreferencesTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        static const test::TempFolder folder;
        home = folder.path();
        ::qputenv("HOME", QByteArray::fromStdString(home.native()));
        ::qputenv("XDG_CONFIG_HOME", QByteArray::fromStdString(config().native()));
    }
    void TearDown() override { fs::remove_all(config()); }

    static fs::path config() { return home / "config"; }
    static fs::path file() { return config() / "Boxlift" / "Boxlift.conf"; }

    static fs::path home;
};

fs::path UserPreferencesTest::home;

TEST_F(UserPreferencesTest, HoldNothingAtFirstAndWriteNothing) {
    EXPECT_EQ(UserPreferences().string("outputDir"), std::nullopt);
    EXPECT_FALSE(fs::exists(file()));
}

TEST_F(UserPreferencesTest, RememberAStringUntilTheNextStart) {
    {
        UserPreferences preferences;
        preferences.setString("outputDir", "/films/new");
        EXPECT_EQ(preferences.string("outputDir"), "/films/new");
    }

    EXPECT_EQ(UserPreferences().string("outputDir"), "/films/new");
}

TEST_F(UserPreferencesTest, AreOnDiskAtOnceAsPlainText) {
    UserPreferences preferences;
    preferences.setString("outputDir", "/films/new");

    EXPECT_EQ(test::readFile(file()), "[General]\noutputDir=/films/new\n");
}

TEST_F(UserPreferencesTest, ReadAPathThatWasWrittenByHand) {
    writeFile(file(), "[General]\noutputDir=/films/my clips\n");

    EXPECT_EQ(UserPreferences().string("outputDir"), "/films/my clips");
}

TEST_F(UserPreferencesTest, ReadAPathWithCommasThatWasWrittenByHandInQuotes) {
    writeFile(file(), "[General]\noutputDir=\"/films/one, two,three\"\n");

    EXPECT_EQ(UserPreferences().string("outputDir"), "/films/one, two,three");
}

TEST_F(UserPreferencesTest, TakeNoListForAString) {
    writeFile(file(), "[General]\noutputDir=/films/one, two,three\n");

    EXPECT_EQ(UserPreferences().string("outputDir"), std::nullopt);
}

TEST_F(UserPreferencesTest, KeepEveryByte) {
    for (const std::string value :
         {"/films/Ünï \xE6\x97\xA5", "/caf\xE9", "/\xFF\xFE", "/\xED\xA0\x80", "/a, b; c=d",
          "@home", "@ByteArray(x)", "@@", "/quoted \"name\"", "/back\\slash", " /spaces ",
          "/line\nbreak", "/tab\t\x01", "/%41%", "", "true", "17"}) {
        UserPreferences().setString("outputDir", value);
        EXPECT_EQ(UserPreferences().string("outputDir"), value);
    }
}

TEST_F(UserPreferencesTest, KeepOtherEntriesOfTheFile) {
    writeFile(file(), "[General]\nother=1\n");
    UserPreferences().setString("outputDir", "/films");

    EXPECT_THAT(test::readFile(file()), HasSubstr("other=1\n"));
    EXPECT_EQ(UserPreferences().string("outputDir"), "/films");
}

TEST_F(UserPreferencesTest, HoldNothingWhereTheFileIsDamaged) {
    writeFile(file(), "\x01\x02 no settings [[[\n");

    EXPECT_EQ(UserPreferences().string("outputDir"), std::nullopt);
}

TEST_F(UserPreferencesTest, RememberForTheSessionWhereTheFileCannotBeWritten) {
    writeFile(config(), "a file where the folder should be");
    UserPreferences preferences;
    preferences.setString("outputDir", "/films");

    EXPECT_EQ(preferences.string("outputDir"), "/films");
    fs::remove(config());
}

TEST_F(UserPreferencesTest, CarryTheOutputFolderToTheNextStart) {
    {
        UserPreferences preferences;
        OutputFolder(preferences, UserFolders::ofSystem()).set("/films/new");
    }
    UserPreferences preferences;

    EXPECT_EQ(OutputFolder(preferences, UserFolders::ofSystem()).path(), "/films/new");
}

class UserFoldersTest : public UserPreferencesTest {};

TEST_F(UserFoldersTest, AreThoseThatTheSystemNames) {
    writeFile(config() / "user-dirs.dirs", "XDG_VIDEOS_DIR=\"$HOME/My Films\"\n");
    const UserFolders folders = UserFolders::ofSystem();

    EXPECT_EQ(folders.home, home);
    EXPECT_THAT(folders.movies, ElementsAre(home / "My Films"));
}

TEST_F(UserFoldersTest, NameAFolderForFilmsWhereTheUserHasSetNone) {
    const UserFolders folders = UserFolders::ofSystem();

    EXPECT_THAT(folders.movies, ElementsAre(home / "Videos"));
}

} // namespace
} // namespace boxlift
