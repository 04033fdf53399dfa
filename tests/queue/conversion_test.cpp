#include "queue/conversion.h"

#include <chrono>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "model/convert_error.h"
#include "support/fake_engine.h"
#include "support/temp_folder.h"

namespace boxlift {
namespace {

namespace fs = std::filesystem;
using test::ConvertCall;
using test::writeFile;
using testing::ElementsAre;

class ConversionTest : public testing::Test {
protected:
    Conversion conversion(const std::string& name = "a.mov") const {
        Conversion result;
        result.url = m_folder.path() / name;
        result.info = test::filmInfo();
        result.outputDir = m_folder.path() / "out";
        result.progress = [](double) {};
        return result;
    }

    const test::TempFolder m_folder;
    test::FakeEngine m_engine;
};

TEST_F(ConversionTest, HandsEverythingToTheEngine) {
    std::vector<double> reports;
    std::stop_source stop;
    bool wasStoppable = false;
    m_engine.converts(m_folder.path() / "a.mov",
                      [&](const auto&, const auto& progress, const std::stop_token& token) {
                          progress(0.25);
                          wasStoppable = token == stop.get_token();
                          return Mode::reencode;
                      });
    Conversion wanted = conversion();
    wanted.target = Target::mov;
    wanted.size = SizeOption::p720;
    wanted.removeAudio = true;
    wanted.progress = [&](double fraction) { reports.push_back(fraction); };
    wanted.stop = stop.get_token();
    const ConversionResult result = wanted.run(m_engine.engine());

    EXPECT_THAT(m_engine.conversions(),
                ElementsAre(ConvertCall{wanted.url, wanted.info, Target::mov, SizeOption::p720,
                                        true, wanted.outputDir / "a.mov"}));
    EXPECT_EQ(result.output, wanted.outputDir / "a.mov");
    EXPECT_EQ(result.mode, Mode::reencode);
    EXPECT_THAT(reports, ElementsAre(0.25));
    EXPECT_TRUE(wasStoppable);
}

TEST_F(ConversionTest, MakesTheFolderBeforeTheEngineBegins) {
    bool wasThere = false;
    Conversion wanted = conversion();
    wanted.outputDir = m_folder.path() / "deep" / "er";
    m_engine.converts(wanted.url, [&](const auto& call, const auto&, const auto&) {
        wasThere = fs::is_directory(call.output.parent_path());
        return Mode::boxlift;
    });
    wanted.run(m_engine.engine());

    EXPECT_TRUE(wasThere);
}

TEST_F(ConversionTest, ConvertsThroughALinkToAFolder) {
    fs::create_directory(m_folder.path() / "real");
    fs::create_directory_symlink(m_folder.path() / "real", m_folder.path() / "out");

    EXPECT_EQ(conversion().run(m_engine.engine()).output, m_folder.path() / "out" / "a.mp4");
    EXPECT_TRUE(fs::exists(m_folder.path() / "real" / "a.mp4"));
}

TEST_F(ConversionTest, AsksTheEngineEvenWhereTheFolderCannotBeMade) {
    writeFile(m_folder.path() / "out", "a file");
    m_engine.converts(m_folder.path() / "a.mov", [](const auto&, const auto&, const auto&) -> Mode {
        throw ConvertError("There is no such folder.");
    });

    EXPECT_THROW(conversion().run(m_engine.engine()), ConvertError);
    EXPECT_EQ(test::readFile(m_folder.path() / "out"), "a file");
}

TEST_F(ConversionTest, CountsFromTwoUpToAFreeName) {
    for (const char* name : {"a.mp4", "a 2.mp4", "a 4.mp4"})
        writeFile(m_folder.path() / "out" / name);

    EXPECT_EQ(conversion().run(m_engine.engine()).output.filename(), "a 3.mp4");
    EXPECT_EQ(conversion().run(m_engine.engine()).output.filename(), "a 5.mp4");
}

TEST_F(ConversionTest, TakesALinkThatLeadsNowhereForATakenName) {
    fs::create_directory(m_folder.path() / "out");
    fs::create_symlink("nowhere", m_folder.path() / "out" / "a.mp4");
    fs::create_symlink("a 2.mp4", m_folder.path() / "out" / "a 2.mp4");

    EXPECT_EQ(conversion().run(m_engine.engine()).output.filename(), "a 3.mp4");
    EXPECT_TRUE(fs::is_symlink(m_folder.path() / "out" / "a.mp4"));
}

TEST_F(ConversionTest, KeepsNamesThatAreHiddenOrHaveOddBytes) {
    EXPECT_EQ(conversion(".hidden").run(m_engine.engine()).output.filename(), ".hidden.mp4");
    EXPECT_EQ(conversion(".mkv").run(m_engine.engine()).output.filename(), ".mkv.mp4");
    EXPECT_EQ(conversion("\xFF%03d:\n.mov").run(m_engine.engine()).output.filename(),
              "\xFF%03d:\n.mp4");
}

TEST_F(ConversionTest, MeasuresTheEngineInSeconds) {
    m_engine.converts(m_folder.path() / "a.mov", [](const auto&, const auto&, const auto&) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        return Mode::boxlift;
    });
    const double seconds = conversion().run(m_engine.engine()).seconds;

    EXPECT_GE(seconds, 0.05);
    EXPECT_LT(seconds, 10);
}

TEST_F(ConversionTest, LetsTheEnginesErrorsPass) {
    m_engine.converts(m_folder.path() / "a.mov", [](const auto&, const auto&, const auto&) -> Mode {
        throw std::out_of_range("at");
    });

    EXPECT_THROW(conversion().run(m_engine.engine()), std::out_of_range);
}

} // namespace
} // namespace boxlift
