#include <filesystem>
#include <functional>
#include <string>

#include <gtest/gtest.h>

#include "input/child.h"
#include "input/long_conversion.h"
#include "support/media_probe.h"

namespace boxlift::test {

namespace fs = std::filesystem;

namespace {

constexpr const char* notWritable = "The output folder can't be written to.";
constexpr const char* nameTaken = "A file with this name appeared while converting.";

} // namespace

/// What happens to the files of a conversion after it has begun.
class ChangedFiles : public LongConversion {
protected:
    /// Converts, and does something as soon as it has begun.
    Conversion convertAnd(const std::function<void()>& change) {
        bool isChanged = false;
        Conversion done = convert(m_request, {}, patience, [&](double) {
            if (!std::exchange(isChanged, true))
                change();
        });
        EXPECT_TRUE(isChanged);
        return done;
    }

    void expectWhole() const {
        EXPECT_NEAR(Converter::analyze(m_request.output).duration, m_request.info.duration, 0.1);
    }
};

TEST_P(ChangedFiles, AnOutputFolderThatIsRemovedIsAnErrorAndNotMadeAgain) {
    EXPECT_EQ(convertAnd([&] { fs::remove(m_out); }).sentence, notWritable);
    EXPECT_FALSE(fs::exists(m_out));
}

TEST_P(ChangedFiles, AnOutputFolderThatIsReplacedByAFileIsAnError) {
    const Conversion done = convertAnd([&] {
        fs::remove(m_out);
        writeFile(m_out, "mine");
    });
    EXPECT_EQ(done.sentence, notWritable);
    EXPECT_EQ(readFile(m_out), "mine");
}

TEST_P(ChangedFiles, AnOutputFolderThatMayNoLongerBeWrittenToIsAnError) {
    setMode(m_folder.path(), 0755);
    setMode(m_source.parent_path(), 0755);
    const std::string sentence = inChild(Rights::ordinary, [&] {
        // A folder of this user's, who alone may change its mode.
        m_out = fs::temp_directory_path() / ("boxlift-theirs-" + std::to_string(::getpid()));
        fs::create_directory(m_out);
        m_request.output = m_out / "out";
        const std::string result = convertAnd([&] { setMode(m_out, 0555); }).sentence;
        const bool isEmpty = namesIn(m_out).empty();
        setMode(m_out, 0755);
        fs::remove_all(m_out);
        return isEmpty ? result : "something was left";
    });
    EXPECT_EQ(sentence, notWritable);
}

TEST_P(ChangedFiles, ASourceThatIsDeletedIsReadToItsEnd) {
    const Conversion done = convertAnd([&] { fs::remove(m_source); });
    EXPECT_TRUE(done.mode) << done.sentence;
    expectWhole();
    writeFile(m_source, m_contents);
}

TEST_P(ChangedFiles, ASourceThatIsReplacedIsReadToItsEnd) {
    const fs::path other = writeFile(m_folder.path() / "other", "something else");
    const Conversion done = convertAnd([&] { fs::rename(other, m_source); });
    EXPECT_TRUE(done.mode) << done.sentence;
    expectWhole();
    EXPECT_EQ(readFile(m_source), "something else");
    writeFile(m_source, m_contents);
}

// What had been read by then may have been all of it.
TEST_P(ChangedFiles, ASourceThatIsTruncatedIsAnErrorOrWasRead) {
    const Conversion done = convertAnd([&] { fs::resize_file(m_source, m_contents.size() / 8); });
    if (done.mode)
        expectWhole();
    else
        EXPECT_EQ(namesIn(m_out), std::vector<std::string>());
    EXPECT_TRUE(done.mode || !done.sentence.empty());
    writeFile(m_source, m_contents);
}

TEST_P(ChangedFiles, ADanglingLinkThatAppearsAtTheOutputsNameStays) {
    const Conversion done = convertAnd([&] { fs::create_symlink("nowhere", m_request.output); });
    EXPECT_EQ(done.sentence, nameTaken);
    EXPECT_EQ(fs::read_symlink(m_request.output), "nowhere");
    EXPECT_FALSE(fs::exists(m_out / "nowhere"));
}

TEST_P(ChangedFiles, AFolderThatAppearsAtTheOutputsNameStays) {
    const Conversion done = convertAnd([&] { fs::create_directory(m_request.output); });
    EXPECT_EQ(done.sentence, nameTaken);
    EXPECT_TRUE(fs::is_directory(m_request.output));
}

TEST_P(ChangedFiles, AnotherNameOfTheSourceThatAppearsAtTheOutputsNameStays) {
    const Conversion done = convertAnd([&] { fs::create_hard_link(m_source, m_request.output); });
    EXPECT_EQ(done.sentence, nameTaken);
    EXPECT_TRUE(fs::equivalent(m_source, m_request.output));
}

TEST_P(ChangedFiles, AnOutputFolderBehindALinkIsWrittenTo) {
    const fs::path link = m_folder.path() / "link";
    fs::create_directory_symlink(m_out, link);
    m_request.output = link / "out";
    EXPECT_TRUE(convert(m_request).mode);
    EXPECT_TRUE(fs::is_symlink(fs::symlink_status(link)));
    EXPECT_EQ(namesIn(m_out), std::vector<std::string>{"out"});
    expectWhole();
}

TEST_P(ChangedFiles, AnOutputFolderBehindALinkThatIsTurnedElsewhereKeepsToTheName) {
    const fs::path other = m_folder.path() / "other";
    fs::create_directory(other);
    const fs::path link = m_folder.path() / "link";
    fs::create_directory_symlink(m_out, link);
    m_request.output = link / "out";
    writeFile(other / "out", "mine");
    const Conversion done = convertAnd([&] {
        fs::remove(link);
        fs::create_directory_symlink(other, link);
    });
    EXPECT_EQ(done.sentence, nameTaken);
    EXPECT_EQ(readFile(other / "out"), "mine");
    EXPECT_EQ(namesIn(m_out), std::vector<std::string>());
}

INSTANTIATE_TEST_SUITE_P(Ways, ChangedFiles, testing::ValuesIn(shorterWays), LongWay::nameOf);

} // namespace boxlift::test
