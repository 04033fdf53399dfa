#include <array>
#include <cerrno>
#include <csignal>
#include <ostream>
#include <string>
#include <string_view>
#include <sys/mount.h>
#include <sys/resource.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "input/child.h"
#include "input/conversion_runner.h"
#include "input/sources.h"
#include "support/media_probe.h"
#include "support/temp_folder.h"

namespace boxlift::test {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view diskFull = "The disk is full. Make room and try again.";
constexpr std::string_view notWritable = "The output folder can't be written to.";
constexpr std::string_view nameTaken = "A file with this name appeared while converting.";

/// The three ways to an output.
struct Way {
    const char* name;
    Target target;
    SizeOption size;
    Mode mode;
};

/// What the list of tests shows.
void PrintTo(const Way& way, std::ostream* out) {
    *out << way.name;
}

constexpr std::array ways{
    Way{"Copy", Target::mov, SizeOption::original, Mode::boxlift},
    Way{"Encode", Target::mp4, SizeOption::p720, Mode::reencode},
    Way{"Transcode", Target::aac, SizeOption::original, Mode::reencode},
};

/// One conversion into a folder of its own; in the end the source must be what it was.
class BadOutput : public testing::TestWithParam<Way> {
protected:
    void SetUp() override {
        setMode(m_folder.path(), 0755);
        m_source = makeSource(m_folder.path(), "source.mov", h264AndAac(3));
        m_contents = readFile(m_source);
        m_out = makeOutputFolder(m_folder.path());
        m_request = {.source = m_source,
                     .info = Converter::analyze(m_source),
                     .target = GetParam().target,
                     .output = m_out / "out",
                     .size = GetParam().size};
    }
    void TearDown() override { EXPECT_EQ(readFile(m_source), m_contents); }

    void expectFailure(std::string_view sentence) {
        const Conversion done = convert(m_request);
        EXPECT_FALSE(done.mode);
        EXPECT_EQ(done.sentence, sentence);
    }

    TempFolder m_folder;
    fs::path m_source;
    fs::path m_out;
    std::string m_contents;
    ConversionRequest m_request;
};

constexpr auto nameOf = [](const testing::TestParamInfo<Way>& info) { return info.param.name; };

const std::vector<std::string> nothing;

/// From here on no file of this process can grow beyond so many bytes; like a full disk, but
/// without one.
void limitFileSize(rlim_t bytes) {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{bytes, bytes};
    if (::setrlimit(RLIMIT_FSIZE, &limit) != 0)
        throw std::system_error(errno, std::generic_category(), "setrlimit");
}

/// A small file system of its own in memory.
class SmallDisk {
public:
    explicit SmallDisk(fs::path folder) : m_folder(std::move(folder)) {
        m_isMounted = ::mount("tmpfs", m_folder.c_str(), "tmpfs", 0, "size=1m,mode=0777") == 0;
    }
    ~SmallDisk() {
        if (m_isMounted)
            ::umount2(m_folder.c_str(), MNT_DETACH);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    bool isMounted() const { return m_isMounted; }

private:
    fs::path m_folder;
    bool m_isMounted = false;
};

} // namespace

TEST_P(BadOutput, WorksWithNothingInTheWay) {
    const Conversion done = convert(m_request);
    EXPECT_EQ(done.mode, GetParam().mode);
    EXPECT_EQ(namesIn(m_out), std::vector<std::string>{"out"});
    // The cases of full disks rest on this.
    EXPECT_GT(fs::file_size(m_request.output), 30'000U);
}

TEST_P(BadOutput, AFolderThatMayNotBeWrittenToIsAnError) {
    setMode(m_out, 0555);
    const auto sentence = inChild(Rights::ordinary, [&] { return convert(m_request).sentence; });
    EXPECT_EQ(sentence, notWritable);
    EXPECT_EQ(namesIn(m_out), nothing);
}

TEST_P(BadOutput, AMissingFolderIsAnErrorAndNotMade) {
    m_request.output = m_out / "missing" / "out";
    expectFailure(notWritable);
    EXPECT_EQ(namesIn(m_out), nothing);
}

TEST_P(BadOutput, AFileInPlaceOfTheFolderIsAnError) {
    writeFile(m_out / "file", "mine");
    m_request.output = m_out / "file" / "out";
    expectFailure(notWritable);
    EXPECT_EQ(readFile(m_out / "file"), "mine");
}

TEST_P(BadOutput, ANameThatIsTooLongIsFoundOutBeforeTheWork) {
    m_request.output = m_out / std::string(300, 'a');
    const Conversion done = convert(m_request);
    EXPECT_EQ(done.sentence, "The operation could not be completed.");
    for (const double fraction : done.progress)
        EXPECT_EQ(fraction, 0);
    EXPECT_EQ(namesIn(m_out), nothing);
}

TEST_P(BadOutput, AFullDiskIsAnErrorThatLeavesNothing) {
    const auto sentence = inChild(Rights::asTheyAre, [&] {
        limitFileSize(12'000);
        return convert(m_request).sentence;
    });
    EXPECT_EQ(sentence, diskFull);
    EXPECT_EQ(namesIn(m_out), nothing);
}

TEST_P(BadOutput, ADiskThatFillsUpIsAnErrorThatLeavesNothing) {
    const SmallDisk disk(m_out);
    if (!disk.isMounted())
        GTEST_SKIP() << "no file system can be mounted here";
    writeFile(m_out / "ballast", std::string(1'016'000, 'x'));
    expectFailure(diskFull);
    EXPECT_EQ(namesIn(m_out), std::vector<std::string>{"ballast"});
    fs::remove(m_out / "ballast");
    // What failed has given its room back.
    EXPECT_EQ(convert(m_request).mode, GetParam().mode);
}

TEST_P(BadOutput, AFileThatStandsThereIsReplaced) {
    writeFile(m_request.output, "old");
    EXPECT_EQ(convert(m_request).mode, GetParam().mode);
    EXPECT_FALSE(probe(m_request.output).all(StreamKind::audio).empty());
}

TEST_P(BadOutput, ALinkThatLeadsNowhereIsReplaced) {
    fs::create_symlink("nowhere", m_request.output);
    EXPECT_EQ(convert(m_request).mode, GetParam().mode);
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(m_request.output)));
    EXPECT_EQ(namesIn(m_out), std::vector<std::string>{"out"});
}

TEST_P(BadOutput, AFolderThatStandsThereStays) {
    writeFile(m_request.output / "inside", "mine");
    expectFailure(nameTaken);
    EXPECT_EQ(readFile(m_request.output / "inside"), "mine");
}

TEST_P(BadOutput, TheSourceItselfIsNoOutput) {
    m_request.output = m_source;
    expectFailure(nameTaken);
    EXPECT_EQ(namesIn(m_source.parent_path()), std::vector<std::string>{"source.mov"});
}

TEST_P(BadOutput, AnotherNameOfTheSourceIsNoOutput) {
    fs::create_hard_link(m_source, m_request.output);
    expectFailure(nameTaken);
    EXPECT_EQ(readFile(m_request.output), m_contents);
}

TEST_P(BadOutput, ALinkToTheSourceIsReplacedAndNotFollowed) {
    fs::create_symlink(m_source, m_request.output);
    EXPECT_EQ(convert(m_request).mode, GetParam().mode);
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(m_request.output)));
}

TEST_P(BadOutput, ASourceThatIsReachedByALinkStays) {
    const fs::path link = m_folder.path() / "in" / "link.mov";
    fs::create_symlink(m_source, link);
    m_request.source = link;
    m_request.output = m_source;
    expectFailure(nameTaken);
}

INSTANTIATE_TEST_SUITE_P(Ways, BadOutput, testing::ValuesIn(ways), nameOf);

} // namespace boxlift::test
