#include "queue/job_state.h"

#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "queue/job_fixture.h"

namespace boxlift {
namespace {

const Done done{"/out/a.mp4", Mode::boxlift, 1.5};

TEST(JobState, EqualsOnlyItselfAmongStatesOfOtherKinds) {
    const std::vector<JobState> states{Analyzing{}, Ready{}, Converting{}, done, Failed{"No."}};
    for (std::size_t i = 0; i < states.size(); ++i) {
        for (std::size_t j = 0; j < states.size(); ++j)
            EXPECT_EQ(states[i] == states[j], i == j) << i << " and " << j;
    }
}

TEST(JobState, OfTwoDoneJobsIsEqualWhenOutputModeAndSecondsAre) {
    EXPECT_EQ(JobState(done), JobState(Done{"/out/a.mp4", Mode::boxlift, 1.5}));
    EXPECT_NE(JobState(done), JobState(Done{"/out/b.mp4", Mode::boxlift, 1.5}));
    EXPECT_NE(JobState(done), JobState(Done{"/out/a.mp4", Mode::reencode, 1.5}));
    EXPECT_NE(JobState(done), JobState(Done{"/out/a.mp4", Mode::boxlift, 1.6}));
}

TEST(JobState, ComparesSecondsExactly) {
    const double next = std::nextafter(1.5, 2.0);

    EXPECT_NE(JobState(done), JobState(Done{"/out/a.mp4", Mode::boxlift, next}));
}

TEST(JobState, ComparesOutputsAsText) {
    EXPECT_NE(JobState(done), JobState(Done{"/out//a.mp4", Mode::boxlift, 1.5}));
    EXPECT_NE(JobState(done), JobState(Done{"/out/./a.mp4", Mode::boxlift, 1.5}));
}

TEST(JobState, OfTwoFailedJobsIsEqualWhenTheMessagesAre) {
    EXPECT_EQ(JobState(Failed{"No."}), JobState(Failed{"No."}));
    EXPECT_NE(JobState(Failed{"No."}), JobState(Failed{"no."}));
    EXPECT_NE(JobState(Failed{"No."}), JobState(Failed{}));
}

} // namespace
} // namespace boxlift
