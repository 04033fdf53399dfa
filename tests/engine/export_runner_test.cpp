#include <chrono>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

#include "engine/converter.h"
#include "fakes/fake_factory.h"
#include "fakes/outcome.h"
#include "fakes/recorder.h"

namespace boxlift {
namespace {

using namespace fakes;
using Status = media::ExportSession::Status;

constexpr auto passthrough = ExportPreset::AVAssetExportPresetPassthrough;
constexpr auto mpeg4 = FileType::AVFileTypeMPEG4;

class ExportRunner : public testing::Test {
protected:
    ExportRunner() { m_factory.sessions.resize(1); }

    SessionScript& script() { return m_factory.sessions[0]; }
    const SessionRecord& record() const { return m_factory.exports.at(0); }
    void run(FileType type = mpeg4) {
        Converter::exportAsset(m_asset, passthrough, type, "/out/clip.mp4", m_recorder.callback(),
                               m_stop.get_token(), m_factory);
    }
    std::string outcome(FileType type = mpeg4) {
        return outcomeOf([&] { run(type); });
    }

    FakeFactory m_factory;
    std::shared_ptr<const FakeAsset> m_asset = std::make_shared<FakeAsset>();
    Recorder m_recorder;
    std::stop_source m_stop;
};

TEST_F(ExportRunner, HandsItsArgumentsToOneSessionAndStartsItOnce) {
    run(FileType::AVFileTypeQuickTimeMovie);
    EXPECT_EQ(record().asset, m_asset);
    EXPECT_EQ(record().preset, passthrough);
    EXPECT_EQ(record().url, "/out/clip.mp4");
    EXPECT_EQ(record().type, FileType::AVFileTypeQuickTimeMovie);
    const std::vector<std::string> expected{"session AVAssetExportPresetPassthrough",
                                            "start export"};
    EXPECT_EQ(m_factory.events.all(), expected);
}

TEST_F(ExportRunner, PutsTheIndexInFrontForMpeg4) {
    run(FileType::AVFileTypeMPEG4);
    EXPECT_TRUE(record().optimize);
}

TEST_F(ExportRunner, LeavesTheIndexBehindForQuickTimeAndM4a) {
    m_factory.sessions.resize(2);
    run(FileType::AVFileTypeQuickTimeMovie);
    run(FileType::AVFileTypeAppleM4A);
    EXPECT_FALSE(m_factory.exports.at(0).optimize);
    EXPECT_FALSE(m_factory.exports.at(1).optimize);
}

TEST_F(ExportRunner, SaysThatNoPresetFitsBeforeAnythingIsWritten) {
    script().presetFits = false;
    EXPECT_EQ(outcome(), "ConvertError: macOS has no export preset for this file.");
    EXPECT_FALSE(m_factory.events.contains("start export"));
    EXPECT_TRUE(m_recorder.fractions().empty());
}

TEST_F(ExportRunner, SaysThatTheContainerDoesNotFitBeforeAnythingIsWritten) {
    script().types = {FileType::AVFileTypeQuickTimeMovie, FileType::AVFileTypeAppleM4A};
    EXPECT_EQ(outcome(), "ConvertError: This content can't be written to that container.");
    script().types = {};
    m_factory.exports.clear();
    EXPECT_EQ(outcome(), "ConvertError: This content can't be written to that container.");
    EXPECT_FALSE(m_factory.events.contains("start export"));
    EXPECT_TRUE(m_recorder.fractions().empty());
}

TEST_F(ExportRunner, ReportsAtOnceThenAtEachStepAndOneLast) {
    script().fractions = {0.0F, 0.25F, 0.5F};
    script().waits = 2;
    run();
    EXPECT_EQ(m_recorder.fractions(), (std::vector<double>{0.0, 0.25, 0.5, 1.0}));
}

TEST_F(ExportRunner, WaitsInStepsOfATenthOfASecond) {
    script().waits = 2;
    run();
    EXPECT_EQ(record().timeouts,
              std::vector<std::chrono::milliseconds>(3, std::chrono::milliseconds(100)));
}

TEST_F(ExportRunner, ReportsTheSessionsFractionsAsTheyAre) {
    script().fractions = {-0.5F, 0.75F, 0.125F, 0.1F};
    script().waits = 3;
    run();
    EXPECT_EQ(m_recorder.fractions(),
              (std::vector<double>{-0.5, 0.75, 0.125, static_cast<double>(0.1F), 1.0}));
}

TEST_F(ExportRunner, ReportsOneOnlyOnceWhenTheSessionIsCompleteAtOnce) {
    script().fractions = {1.0F};
    run();
    EXPECT_EQ(m_recorder.fractions(), std::vector<double>{1.0});
}

TEST_F(ExportRunner, ReportsOneOnlyOnceWhenTheSessionCompletesBetweenTwoLooks) {
    script().fractions = {0.5F, 1.0F};
    script().waits = 1;
    run();
    EXPECT_EQ(m_recorder.fractions(), (std::vector<double>{0.5, 1.0}));
}

TEST_F(ExportRunner, ReportsTheEndAfterTheSessionHasEnded) {
    bool hasEnded = false;
    script().waits = 1;
    script().onEnd = [&] { hasEnded = true; };
    std::vector<bool> endedWhenReported;
    Converter::exportAsset(
        m_asset, passthrough, mpeg4, "/out/clip.mp4",
        [&](double) { endedWhenReported.push_back(hasEnded); }, {}, m_factory);
    EXPECT_EQ(endedWhenReported, (std::vector<bool>{false, false, true}));
}

TEST_F(ExportRunner, PassesTheErrorOfAFailedSessionOnUnchanged) {
    script().endStatus = Status::failed;
    script().error = planted();
    EXPECT_EQ(exceptionOf([&] { run(); }), script().error);
    EXPECT_EQ(m_recorder.fractions(), std::vector<double>{0.0});
}

TEST_F(ExportRunner, HasASentenceForAFailureWithoutAnError) {
    script().endStatus = Status::failed;
    EXPECT_EQ(outcome(), "ConvertError: Export failed.");
}

TEST_F(ExportRunner, TakesEveryUnexpectedStatusForAFailure) {
    for (const Status status : {Status::unknown, Status::waiting, Status::exporting}) {
        m_factory.exports.clear();
        script().endStatus = status;
        EXPECT_EQ(outcome(), "ConvertError: Export failed.");
    }
    m_factory.exports.clear();
    script().error = planted();
    EXPECT_EQ(exceptionOf([&] { run(); }), script().error);
}

TEST_F(ExportRunner, IsCancelledWhenAnybodyCancelledTheSession) {
    script().endStatus = Status::cancelled;
    script().error = planted();
    EXPECT_EQ(outcome(), "cancelled");
    EXPECT_EQ(m_recorder.fractions(), std::vector<double>{0.0});
}

TEST_F(ExportRunner, MakesNoSessionWhenCancelledBeforeTheStart) {
    m_stop.request_stop();
    EXPECT_EQ(outcome(), "cancelled");
    EXPECT_TRUE(m_factory.events.all().empty());
    EXPECT_TRUE(m_recorder.fractions().empty());
}

TEST_F(ExportRunner, StartsNothingWhenCancelledWhileTheSessionIsConfigured) {
    script().onConfigure = [&] { m_stop.request_stop(); };
    EXPECT_EQ(outcome(), "cancelled");
    EXPECT_FALSE(m_factory.events.contains("start export"));
    EXPECT_TRUE(m_recorder.fractions().empty());
}

TEST_F(ExportRunner, CancelsTheSessionInTheMiddle) {
    script().endsOnlyWhenCancelled = true;
    script().onWait = [&] { m_stop.request_stop(); };
    EXPECT_EQ(outcome(), "cancelled");
    EXPECT_TRUE(m_factory.events.contains("cancel export"));
    EXPECT_EQ(m_recorder.fractions(), std::vector<double>{0.0});
}

TEST_F(ExportRunner, CancelsTheSessionFromAnotherThread) {
    script().endsOnlyWhenCancelled = true;
    std::jthread canceller;
    script().onStart = [&] {
        canceller = std::jthread([this] {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            m_stop.request_stop();
        });
    };
    EXPECT_EQ(outcome(), "cancelled");
}

TEST_F(ExportRunner, IsCancelledWhateverFailsAfterTheRequest) {
    script().endStatus = Status::failed;
    script().error = planted();
    script().onWait = [&] { m_stop.request_stop(); };
    EXPECT_EQ(outcome(), "cancelled");
    EXPECT_TRUE(m_factory.events.contains("cancel export"));
}

TEST_F(ExportRunner, IsCancelledRatherThanRefusedAfterTheRequest) {
    script().types = {};
    EXPECT_EQ(outcome(), "ConvertError: This content can't be written to that container.");
    m_factory.exports.clear();
    m_factory.onMakeSession = [&] { m_stop.request_stop(); };
    EXPECT_EQ(outcome(), "cancelled");
}

TEST_F(ExportRunner, SucceedsWhenTheRequestComesAfterCompletion) {
    script().onEnd = [&] { m_stop.request_stop(); };
    EXPECT_EQ(outcome(), "success");
    EXPECT_EQ(m_recorder.fractions(), (std::vector<double>{0.0, 1.0}));
}

TEST_F(ExportRunner, DoesNotCancelASessionThatIsGone) {
    run();
    m_stop.request_stop();
    EXPECT_FALSE(m_factory.events.contains("cancel export"));
}

TEST_F(ExportRunner, PassesOnWhatTheProgressCallbackThrows) {
    const auto thrown = std::make_exception_ptr(std::runtime_error("no more"));
    EXPECT_EQ(exceptionOf([&] {
                  Converter::exportAsset(
                      m_asset, passthrough, mpeg4, "/out/clip.mp4",
                      [&](double) { std::rethrow_exception(thrown); }, {}, m_factory);
              }),
              thrown);
}

} // namespace
} // namespace boxlift
