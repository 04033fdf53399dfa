#include "fuzz/trials.h"

#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace boxlift::test {

using testing::AllOf;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

constexpr int bad = 2;

/// Five trials, of which the third does this.
Trials withOneThat(const std::function<void()>& misbehave, const TrialLimits& limits = {}) {
    return runTrials(
        5,
        [&](int number) {
            if (number == bad)
                misbehave();
            return number;
        },
        limits);
}

void expectOneFinding(const Trials& trials, std::string_view what, std::string_view said = "") {
    EXPECT_THAT(trials.findings, ElementsAre(AllOf(Field(&Finding::number, bad),
                                                   Field(&Finding::what, HasSubstr(what)),
                                                   Field(&Finding::said, HasSubstr(said)))));
    EXPECT_THAT(trials.outcomes, ElementsAre(0, 1, -1, 3, 4));
}

} // namespace

TEST(Trials, AllRunInOrderAndSayHowTheyEnded) {
    const Trials trials = runTrials(4, [](int number) { return 10 * number; });
    EXPECT_THAT(trials.findings, IsEmpty());
    EXPECT_THAT(trials.outcomes, ElementsAre(0, 10, 20, 30));
}

TEST(Trials, ACrashIsFoundWithItsPlaceAndTheOthersGoOn) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers have ways of their own";
#endif
    expectOneFinding(withOneThat([] { ::raise(SIGSEGV); }), "crashed", "libc.so");
    expectOneFinding(withOneThat([] { std::abort(); }), "crashed", "abort");
}

TEST(Trials, AnExceptionIsFoundWithItsText) {
    expectOneFinding(withOneThat([] { throw std::logic_error("a text"); }), "threw", "a text");
}

TEST(Trials, WorkWithoutEndIsFoundAndEnded) {
    TrialLimits limits;
    limits.time = std::chrono::milliseconds(200);
    const auto work = [] {
        for (volatile unsigned counter = 0;;)
            counter = counter + 1;
    };
    expectOneFinding(withOneThat(work, limits), "took longer than 200 ms");
}

TEST(Trials, AHangIsFoundAndEnded) {
    TrialLimits limits;
    limits.time = std::chrono::milliseconds(100);
    expectOneFinding(
        withOneThat([] { std::this_thread::sleep_for(std::chrono::minutes(1)); }, limits),
        "took longer than 100 ms");
}

TEST(Trials, GrowthIsFound) {
    TrialLimits limits;
    limits.growth = 32 << 20;
    const auto grow = [] {
        std::vector<char> bytes(64 << 20, 'a');
        bytes.back() = bytes[bytes.size() / 2];
        EXPECT_EQ(bytes.back(), 'a');
    };
    const Trials trials = withOneThat(grow, limits);
    expectOneFinding(trials, "grew by");
    EXPECT_GE(trials.growth, 64 << 20);
}

TEST(Trials, TheSlowestOneIsMeasured) {
    const Trials trials =
        withOneThat([] { std::this_thread::sleep_for(std::chrono::milliseconds(120)); });
    EXPECT_THAT(trials.findings, IsEmpty());
    EXPECT_GE(trials.slowest, std::chrono::milliseconds(120));
}

} // namespace boxlift::test
