#include <algorithm>
#include <chrono>
#include <fcntl.h>
#include <string>
#include <unistd.h>

#include <gtest/gtest.h>

#include "engine/media/stretch_plan.h"
#include "input/conversion_runner.h"
#include "input/long_conversion.h"

namespace boxlift::test {

namespace fs = std::filesystem;

namespace {

/// Meant to be half a second; the machine may be busy.
constexpr double soon = 5;

/// Creates a file where nothing stands. Whether it could.
bool plant(const fs::path& path, const std::string& contents) {
    const int descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (descriptor < 0)
        return false;
    const auto count = ::write(descriptor, contents.data(), contents.size());
    ::close(descriptor);
    return count == static_cast<ssize_t>(contents.size());
}

} // namespace

class Interruption : public LongConversion {
protected:
    /// Stops at the first report of at least `fraction`.
    void stopFrom(double fraction) {
        std::stop_source stop;
        std::chrono::steady_clock::time_point asked;
        const Conversion done =
            convert(m_request, stop.get_token(), patience, [&](double reported) {
                if (reported < fraction || stop.stop_requested())
                    return;
                asked = std::chrono::steady_clock::now();
                stop.request_stop();
            });
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - asked;
        ASSERT_TRUE(stop.stop_requested());
        EXPECT_TRUE(done.wasCancelled) << done.sentence;
        EXPECT_FALSE(done.wasTooSlow);
        EXPECT_LT(taken.count(), soon);
        EXPECT_TRUE(std::is_sorted(done.progress.begin(), done.progress.end()));
        RecordProperty("milliseconds", static_cast<int>(taken.count() * 1000));
        EXPECT_EQ(namesIn(m_out), std::vector<std::string>());
    }
};

TEST_P(Interruption, AStopBeforeTheStartDoesNothing) {
    writeFile(m_request.output, "standing");
    std::stop_source stop;
    stop.request_stop();
    const Conversion done = convert(m_request, stop.get_token());
    EXPECT_TRUE(done.wasCancelled);
    EXPECT_TRUE(done.progress.empty());
    EXPECT_EQ(readFile(m_request.output), "standing");
}

TEST_P(Interruption, AStopAtTheFirstReportLeavesNothing) {
    stopFrom(-1);
}

TEST_P(Interruption, AStopInTheMiddleLeavesNothing) {
    // A copy is over before it has reported twice.
    stopFrom(m_request.target == Target::mov ? -1 : 0.4);
}

// Whether the stop or the end comes first is open; half a file is not among the outcomes.
TEST_P(Interruption, AStopNearTheEndLeavesAllOrNothing) {
    std::stop_source stop;
    const Conversion done = convert(m_request, stop.get_token(), patience, [&](double reported) {
        if (reported > 0.9)
            stop.request_stop();
    });
    if (done.mode) {
        EXPECT_NEAR(Converter::analyze(m_request.output).duration, m_request.info.duration, 0.1);
    } else {
        EXPECT_TRUE(done.wasCancelled) << done.sentence;
        EXPECT_EQ(namesIn(m_out), std::vector<std::string>());
    }
}

TEST_P(Interruption, AStopWithTheLastReportChangesNothing) {
    std::stop_source stop;
    const Conversion done = convert(m_request, stop.get_token(), patience, [&](double reported) {
        if (reported == 1.0)
            stop.request_stop();
    });
    EXPECT_TRUE(done.mode) << done.sentence;
    EXPECT_TRUE(std::is_sorted(done.progress.begin(), done.progress.end()));
    EXPECT_EQ(namesIn(m_out), std::vector<std::string>{"out"});
    EXPECT_NEAR(Converter::analyze(m_request.output).duration, m_request.info.duration, 0.1);
}

// Somebody else's file is neither replaced nor removed, and nothing else is tried.
TEST_P(Interruption, ANameThatIsTakenMeanwhileIsAnError) {
    bool isPlanted = false;
    const Conversion done = convert(m_request, {}, patience, [&](double) {
        isPlanted = isPlanted || plant(m_request.output, "somebody else's");
    });
    ASSERT_TRUE(isPlanted);
    ASSERT_FALSE(done.wasTooSlow);
    EXPECT_FALSE(done.mode);
    EXPECT_EQ(done.sentence, "A file with this name appeared while converting.");
    EXPECT_EQ(namesIn(m_out), std::vector<std::string>{"out"});
    EXPECT_EQ(readFile(m_request.output), "somebody else's");
    EXPECT_TRUE(std::is_sorted(done.progress.begin(), done.progress.end()));
}

INSTANTIATE_TEST_SUITE_P(Ways, Interruption, testing::ValuesIn(longWays), LongWay::nameOf);

// On a machine with one core it is as the other way to AAC.
INSTANTIATE_TEST_SUITE_P(Joined, Interruption, testing::Values(joinedWay), LongWay::nameOf);

TEST(JoinedWay, IsLongEnoughForTwoCores) {
    const auto duration = media::Time::fromSeconds(joinedSeconds);
    EXPECT_EQ(media::planStretches(duration, 44100, 2).workers, 2);
}

} // namespace boxlift::test
