#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <sys/mount.h>

#include "input/conversion_runner.h"
#include "input/engine_under_test.h"
#include "input/sources.h"
#include "queue/conversion.h"
#include "support/temp_folder.h"

namespace boxlift::test {

namespace fs = std::filesystem;

namespace {

/// A file system in memory in which capital and small letters are the same.
class FoldingDisk {
public:
    explicit FoldingDisk(fs::path folder) : m_folder(std::move(folder)) {
        m_isMounted =
            ::mount("tmpfs", m_folder.c_str(), "tmpfs", 0, "size=16m,mode=0777,casefold") == 0;
    }
    ~FoldingDisk() {
        if (m_isMounted)
            ::umount2(m_folder.c_str(), MNT_DETACH);
    }
    FoldingDisk(const FoldingDisk&) = delete;
    FoldingDisk& operator=(const FoldingDisk&) = delete;

    bool isMounted() const { return m_isMounted; }

private:
    fs::path m_folder;
    bool m_isMounted = false;
};

} // namespace

TEST(CaseFolding, ANameThatDiffersInCaseAloneIsTaken) {
    const TempFolder folder;
    const fs::path source = makeSource(folder.path(), "FILM.mov", h264AndAac());
    const fs::path out = makeOutputFolder(folder.path());
    const FoldingDisk disk(out);
    if (!disk.isMounted())
        GTEST_SKIP() << "no file system that folds case can be mounted here";
    writeFile(out / "film.mp4", "mine");
    const boxlift::Conversion conversion{.url = source,
                                         .info = Converter::analyze(source),
                                         .outputDir = out,
                                         .progress = [](double) {},
                                         .stop = {}};
    EXPECT_EQ(conversion.run(engineUnderTest()).output, out / "FILM 2.mp4");
    EXPECT_EQ(readFile(out / "film.mp4"), "mine");
}

} // namespace boxlift::test
