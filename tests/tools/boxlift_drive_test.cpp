#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drive/command_line.h"
#include "support/temp_folder.h"
#include "tools/child_process.h"

// The program itself, as others start it.
namespace boxlift::drive {
namespace {

namespace fs = std::filesystem;
using boxlift::test::TempFolder;
using boxlift::test::writeFile;
using test::Finished;
using testing::HasSubstr;

Finished runDrive(std::vector<std::string> arguments, const char* outputPath = nullptr) {
    arguments.insert(arguments.begin(), BOXLIFT_DRIVE);
    return test::runProgram(arguments, outputPath);
}

std::string refusal(const fs::path& url) {
    return R"({"event":"failed","url":")" + url.native() +
           R"(","message":"MKV files can't be opened by macOS. Convert them with a tool like )"
           R"(ffmpeg or HandBrake first."})"
           "\n";
}

TEST(BoxliftDrive, AnswersAWrongCommandLineWithItsUsage) {
    for (const auto& arguments : std::vector<std::vector<std::string>>{
             {},
             {"analyze"},
             {"transmogrify", "a.mov"},
             {"convert", "a.mov"},
             {"convert", "--output-dir"},
             {"convert", "--output-dir", "out", "--target", "avi", "a.mov"},
             {"convert", "--output-dir", "out", "--quality", "a.mov"}}) {
        const Finished finished = runDrive(arguments);

        EXPECT_EQ(finished.exitStatus, 2);
        EXPECT_EQ(finished.output, "");
        EXPECT_THAT(finished.errors, HasSubstr(std::string(usageLine) + "\n"));
    }
}

TEST(BoxliftDrive, TellsOfAFileThatItRefuses) {
    const TempFolder folder;
    const auto url = writeFile(folder.path() / "clip.mkv");
    const Finished finished = runDrive({"analyze", url.native()});

    EXPECT_EQ(finished.exitStatus, 1);
    EXPECT_EQ(finished.output, refusal(url) +
                                   R"({"event":"finished","done":0,"failed":1,"blocked":0})"
                                   "\n");
}

TEST(BoxliftDrive, MakesPathsAbsolute) {
    const Finished finished = runDrive({"analyze", ".//clip.mkv"});

    EXPECT_THAT(finished.output, HasSubstr(refusal(fs::current_path() / "clip.mkv")));
}

TEST(BoxliftDrive, TellsOfAFileThatDoesNotExist) {
    const TempFolder folder;
    const fs::path url = folder.path() / "missing.mov";
    const Finished finished =
        runDrive({"convert", "--output-dir", (folder.path() / "out").native(), url.native()});

    EXPECT_EQ(finished.exitStatus, 1);
    EXPECT_EQ(finished.output,
              R"({"event":"failed","url":")" + url.native() +
                  R"(","message":"macOS can't open this file. It may be damaged or in a format )"
                  R"(AVFoundation doesn't support."})"
                  "\n"
                  R"({"event":"finished","done":0,"failed":1,"blocked":0})"
                  "\n");
    EXPECT_FALSE(fs::exists(folder.path() / "out"));
}

TEST(BoxliftDrive, HasNothingToDoForAnEmptyFolder) {
    const TempFolder folder;
    const Finished finished = runDrive({"analyze", folder.path().native()});

    EXPECT_EQ(finished.exitStatus, 0);
    EXPECT_EQ(finished.output, R"({"event":"finished","done":0,"failed":0,"blocked":0})"
                               "\n");
}

TEST(BoxliftDrive, LeavesThePreferencesOfTheUserAlone) {
    const TempFolder folder;
    const fs::path home = folder.path() / "home";
    fs::create_directory(home);
    const Finished finished = test::runProgram(
        {"/usr/bin/env", "HOME=" + home.native(), "XDG_CONFIG_HOME=" + home.native(), BOXLIFT_DRIVE,
         "convert", "--output-dir", (folder.path() / "out").native(), folder.path().native()});

    EXPECT_EQ(finished.exitStatus, 0);
    EXPECT_TRUE(fs::is_empty(home));
}

TEST(BoxliftDrive, FailsWhenItsOutputIsClosed) {
    const TempFolder folder;

    EXPECT_EQ(runDrive({"analyze", folder.path().native()}, "").exitStatus, 1);
}

TEST(BoxliftDrive, FailsWhenItsOutputIsFull) {
    if (!fs::exists("/dev/full"))
        GTEST_SKIP() << "this system has no /dev/full";
    const TempFolder folder;

    EXPECT_EQ(runDrive({"analyze", folder.path().native()}, "/dev/full").exitStatus, 1);
}

TEST(BoxliftDrive, TakesALimitOnTheSizeOfFilesForAnError) {
    // One block of 512 bytes; each line has about 150.
    std::vector<std::string> command{"/bin/sh", "-c", R"(ulimit -f 1; exec "$0" analyze "$@")",
                                     BOXLIFT_DRIVE};
    for (int i = 0; i < 20; ++i)
        command.push_back("/missing/" + std::to_string(i) + ".mkv");
    const Finished finished = test::runProgram(command);

    EXPECT_EQ(finished.exitStatus, 1);
    EXPECT_EQ(finished.output.size(), 512u);
}

TEST(BoxliftDrive, FailsWhenItsReaderHasGone) {
    const TempFolder folder;
    const Finished finished =
        test::runProgram({"/bin/sh", "-c", R"((sleep 0.2; "$0" "$@"; echo "status $?" >&2) | :)",
                          BOXLIFT_DRIVE, "analyze", folder.path().native()});

    EXPECT_THAT(finished.errors, HasSubstr("status 1\n"));
}

TEST(BoxliftDrive, FinishesWhenATerminateSignalStopsIt) {
    const TempFolder folder;
    const std::string script = R"(lines=$1; shift; mkfifo "$lines"; "$0" analyze "$@" >"$lines" & )"
                               R"(exec 3<"$lines"; read -r line <&3; kill -TERM $!; sleep 0.2; )"
                               R"(tail -n 1 <&3; wait $!)";
    std::vector<std::string> command{"/bin/sh", "-c", script, BOXLIFT_DRIVE,
                                     (folder.path() / "lines").native()};
    // More than a pipe holds: the program is still at work while nobody reads its lines.
    for (int i = 0; i < 600; ++i)
        command.push_back("/" + std::string(150, 'x') + std::to_string(i) + ".mkv");
    const Finished finished = test::runProgram(command);

    EXPECT_EQ(finished.exitStatus, 130);
    EXPECT_THAT(finished.output, testing::StartsWith(R"({"event":"finished","done":0,"failed":)"));
    EXPECT_THAT(finished.output, Not(HasSubstr(R"("failed":600)")));
}

} // namespace
} // namespace boxlift::drive
