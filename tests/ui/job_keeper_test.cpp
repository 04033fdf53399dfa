#include "ui/job_keeper.h"

#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QTest>

#include "ui/support/stage.h"

namespace boxlift::test {
namespace {

TEST(JobKeeper, KeepsARemovedJobUntilItHasAnother) {
    Stage stage;
    Job* first = stage.addReady("first.mov");
    Job* second = stage.addReady("second.mov");
    const std::weak_ptr<Job> watched = first->weak_from_this();
    JobKeeper keeper;
    QSignalSpy changes(&keeper, &JobKeeper::jobChanged);
    keeper.setJob(first);
    keeper.setJob(first);
    stage.queue().remove(first);
    EXPECT_FALSE(QTest::qWaitFor([&] { return watched.expired(); }, 500));
    EXPECT_EQ(keeper.job(), first);
    keeper.setJob(second);
    EXPECT_TRUE(QTest::qWaitFor([&] { return watched.expired(); }));
    EXPECT_EQ(changes.count(), 2);
}

TEST(JobKeeper, IsNotInTheWayOfItsJobsEnd) {
    Stage stage;
    Job* job = stage.addReady("film.mov");
    const std::weak_ptr<Job> watched = job->weak_from_this();
    auto keeper = std::make_unique<JobKeeper>();
    keeper->setJob(job);
    stage.queue().remove(job);
    keeper.reset();
    EXPECT_TRUE(QTest::qWaitFor([&] { return watched.expired(); }));
}

} // namespace
} // namespace boxlift::test
