#include "queue/job_list.h"

#include <set>

#include <QAbstractItemModelTester>

#include "queue/job_fixture.h"

namespace boxlift {
namespace {

using namespace std::chrono_literals;
using test::spinFor;
using test::spinUntil;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class JobListTest : public test::JobFixture {
protected:
    /// Jobs 0.mov, 1.mov...
    void appendNumbered(int count) {
        JobList::Jobs jobs;
        for (int i = 0; i < count; ++i)
            jobs.push_back(makeJob(std::to_string(i) + ".mov"));
        m_list.append(jobs);
    }

    std::vector<std::string> names() const {
        std::vector<std::string> result;
        for (const auto& job : m_list.jobs())
            result.push_back(job->path().stem().native());
        return result;
    }

    /// What a view would show: the names by way of the model.
    std::vector<std::string> shown() const {
        std::vector<std::string> result;
        for (int row = 0; row < m_list.rowCount(); ++row) {
            const auto* job = m_list.data(m_list.index(row), JobList::jobRole).value<Job*>();
            result.push_back(job->path().stem().native());
        }
        return result;
    }

    void removeNamed(const std::set<std::string>& gone) {
        m_list.removeIf([&](const Job& job) { return gone.contains(job.path().stem().native()); });
    }

    JobList m_list;
    const QAbstractItemModelTester m_tester{&m_list,
                                            QAbstractItemModelTester::FailureReportingMode::Fatal};
};

TEST_F(JobListTest, IsEmptyAtFirst) {
    EXPECT_EQ(m_list.count(), 0);
    EXPECT_EQ(m_list.rowCount(), 0);
    EXPECT_FALSE(m_list.contains(input("a.mov")));
}

TEST_F(JobListTest, GivesEachRowItsJobInTheRoleJob) {
    const auto a = makeJob("a.mov");
    const auto b = makeJob("b.mov");
    m_list.append({a, b});

    EXPECT_EQ(m_list.roleNames().value(JobList::jobRole), "job");
    EXPECT_EQ(m_list.data(m_list.index(0), JobList::jobRole).value<Job*>(), a.get());
    EXPECT_EQ(m_list.data(m_list.index(1), JobList::jobRole).value<Job*>(), b.get());
}

TEST_F(JobListTest, HasNothingElsewhere) {
    appendNumbered(2);

    EXPECT_FALSE(m_list.data(m_list.index(0), Qt::DisplayRole).isValid());
    EXPECT_FALSE(m_list.data(m_list.index(2), JobList::jobRole).isValid());
    EXPECT_FALSE(m_list.data({}, JobList::jobRole).isValid());
    EXPECT_EQ(m_list.rowCount(m_list.index(0)), 0);
}

TEST_F(JobListTest, AppendsAtTheEndWithOneInsertion) {
    appendNumbered(2);
    const QSignalSpy inserted(&m_list, &JobList::rowsInserted);
    const QSignalSpy counts(&m_list, &JobList::countChanged);
    m_list.append({makeJob("x.mov"), makeJob("y.mov")});

    EXPECT_THAT(names(), ElementsAre("0", "1", "x", "y"));
    ASSERT_EQ(inserted.count(), 1);
    EXPECT_EQ(inserted.at(0).at(1).toInt(), 2);
    EXPECT_EQ(inserted.at(0).at(2).toInt(), 3);
    EXPECT_EQ(counts.count(), 1);
    EXPECT_EQ(m_list.property("count"), 4);
}

TEST_F(JobListTest, SaysNothingWhenNothingIsAppended) {
    const QSignalSpy inserted(&m_list, &JobList::rowsInserted);
    const QSignalSpy counts(&m_list, &JobList::countChanged);
    m_list.append({});

    EXPECT_EQ(inserted.count() + counts.count(), 0);
}

TEST_F(JobListTest, KnowsThePathsOfItsJobsAsText) {
    appendNumbered(1);

    EXPECT_TRUE(m_list.contains(input("0.mov")));
    EXPECT_FALSE(m_list.contains(input("1.mov")));
    EXPECT_FALSE(m_list.contains(m_folder.path() / "." / "0.mov"));
}

TEST_F(JobListTest, RemovesWhatThePredicateNamesAndReturnsIt) {
    appendNumbered(5);
    const auto first = m_list.jobs().at(1);
    const auto second = m_list.jobs().at(3);
    const auto removed = m_list.removeIf(
        [&](const Job& job) { return &job == first.get() || &job == second.get(); });

    EXPECT_THAT(removed, ElementsAre(first, second));
    EXPECT_THAT(names(), ElementsAre("0", "2", "4"));
    EXPECT_FALSE(m_list.contains(first->path()));
    EXPECT_TRUE(m_list.contains(m_list.jobs().at(0)->path()));
}

TEST_F(JobListTest, TellsOfEachStretchOfRemovedRowsFromTheEnd) {
    appendNumbered(6);
    const QSignalSpy removed(&m_list, &JobList::rowsRemoved);
    const QSignalSpy counts(&m_list, &JobList::countChanged);
    removeNamed({"0", "2", "3", "5"});

    EXPECT_THAT(shown(), ElementsAre("1", "4"));
    ASSERT_EQ(removed.count(), 3);
    const int expected[][2] = {{5, 5}, {2, 3}, {0, 0}};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(removed.at(i).at(1).toInt(), expected[i][0]);
        EXPECT_EQ(removed.at(i).at(2).toInt(), expected[i][1]);
    }
    EXPECT_EQ(counts.count(), 1);
}

TEST_F(JobListTest, SaysNothingWhenNothingIsRemoved) {
    appendNumbered(2);
    const QSignalSpy removed(&m_list, &JobList::rowsRemoved);
    const QSignalSpy counts(&m_list, &JobList::countChanged);

    EXPECT_THAT(m_list.removeIf([](const Job&) { return false; }), IsEmpty());
    EXPECT_EQ(removed.count() + counts.count(), 0);
}

TEST_F(JobListTest, CanBeEmptied) {
    appendNumbered(3);
    m_list.removeIf([](const Job&) { return true; });

    EXPECT_EQ(m_list.rowCount(), 0);
    EXPECT_FALSE(m_list.contains(input("0.mov")));
    appendNumbered(2);
    EXPECT_THAT(shown(), ElementsAre("0", "1"));
}

TEST_F(JobListTest, KeepsTheOrderWhenSoManyStretchesGoThatViewsStartOver) {
    appendNumbered(1000);
    const QSignalSpy removed(&m_list, &JobList::rowsRemoved);
    const QSignalSpy resets(&m_list, &JobList::modelReset);
    const auto gone = m_list.removeIf(
        [](const Job& job) { return std::stoi(job.path().stem().native()) % 2 == 0; });

    EXPECT_THAT(gone, SizeIs(500));
    EXPECT_EQ(removed.count(), 0);
    EXPECT_EQ(resets.count(), 1);
    std::vector<std::string> odd;
    for (int i = 1; i < 1000; i += 2)
        odd.push_back(std::to_string(i));
    EXPECT_EQ(shown(), odd);
    EXPECT_FALSE(m_list.contains(input("0.mov")));
    EXPECT_TRUE(m_list.contains(input("1.mov")));
}

TEST_F(JobListTest, KeepsRemovedJobsUntilViewsHaveLetGoOfThem) {
    m_list.append({makeJob("a.mov")});
    const std::weak_ptr<Job> weak = m_list.jobs().front();
    m_list.removeIf([](const Job&) { return true; });
    spinFor(100ms);

    EXPECT_FALSE(weak.expired());
    EXPECT_TRUE(spinUntil([&] { return weak.expired(); }));
}

} // namespace
} // namespace boxlift
