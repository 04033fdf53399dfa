#include "queue/queue.h"

#include <array>
#include <thread>

#include "model/convert_error.h"
#include "queue/file_url.h"
#include "queue/queue_fixture.h"
#include "support/without_privileges.h"

namespace boxlift {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using test::Gate;
using test::spinFor;
using test::spinUntil;
using test::writeFile;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;

class QueueIntake : public test::QueueFixture {
protected:
    QUrl url(const std::string& name) const { return fileUrl(input(name)); }

    /// The URLs are delivered when the test says so.
    Queue::DropItem pendingItem() {
        return [this](auto deliver) { m_deliveries.push_back(std::move(deliver)); };
    }

    std::vector<std::function<void(std::optional<QUrl>)>> m_deliveries;
};

TEST_F(QueueIntake, MakesAJobThatIsAnalyzed) {
    queue().add({url("a.mov")});
    ASSERT_THAT(queue().jobs(), SizeIs(1));
    const auto job = queue().jobs().front();

    EXPECT_EQ(job->url(), url("a.mov"));
    EXPECT_EQ(job->state(), Job::State(Analyzing{}));
    EXPECT_EQ(job->info(), std::nullopt);
    EXPECT_EQ(job->progress(), 0.0);
    ASSERT_TRUE(spinUntilAnalyzed());
    EXPECT_EQ(job->state(), Job::State(Ready{}));
}

TEST_F(QueueIntake, BeginsAnalysesInALaterTurn) {
    add("a.mov");
    std::this_thread::sleep_for(50ms);
    EXPECT_THAT(m_engine.analyses(), IsEmpty());

    EXPECT_TRUE(spinUntilAnalyzed());
    EXPECT_THAT(m_engine.analyses(), SizeIs(1));
}

TEST_F(QueueIntake, AppendsInTheOrderGiven) {
    add("z.mov");
    queue().add({url("b.mov"), url("a.mov"), url("c.mov")});

    EXPECT_THAT(names(), ElementsAre("z.mov", "b.mov", "a.mov", "c.mov"));
}

TEST_F(QueueIntake, MakesOneJobOfAFileThatIsAddedTwice) {
    queue().add({url("a.mov"), url("b.mov"), url("a.mov")});
    EXPECT_THAT(names(), ElementsAre("a.mov", "b.mov"));
    queue().add({url("c.mov"), url("a.mov")});
    EXPECT_THAT(names(), ElementsAre("a.mov", "b.mov", "c.mov"));

    ASSERT_TRUE(spinUntilAnalyzed());
    EXPECT_THAT(m_engine.analyses(), SizeIs(3));
}

TEST_F(QueueIntake, MakesOneJobOfAFileThatIsAddedByItselfAndInItsFolder) {
    writeFile(input("a.mov"));
    queue().add({url("a.mov"), fileUrl(m_folder.path() / "in")});

    EXPECT_THAT(names(), ElementsAre("a.mov"));
}

TEST_F(QueueIntake, TakesAnotherSpellingOfAPathForAnotherFile) {
    const fs::path file = writeFile(input("a.mov"));
    fs::create_symlink(file, input("link.mov"));
    queue().addPaths({file, input("link.mov"), m_folder.path() / "in" / "." / "a.mov",
                      m_folder.path() / "in" / ".." / "in" / "a.mov"});

    EXPECT_THAT(queue().jobs(), SizeIs(4));
}

TEST_F(QueueIntake, MakesANewJobOfAFileThatWasRemoved) {
    const auto first = addReady("a.mov");
    queue().remove(first.get());
    const auto second = addReady("a.mov");

    EXPECT_THAT(queue().jobs(), SizeIs(1));
    EXPECT_NE(second->id(), first->id());
}

TEST_F(QueueIntake, TakesTheFilesOfAFolderWithoutHiddenOnes) {
    writeFile(input("a.mp4"));
    writeFile(input(".hidden.mp4"));
    writeFile(input("sub/b.mov"));
    queue().add({fileUrl(m_folder.path() / "in")});

    EXPECT_THAT(names(), UnorderedElementsAre("a.mp4", "b.mov"));
}

TEST_F(QueueIntake, TakesNothingOfAnApplicationInAFolder) {
    writeFile(input("a.mp4"));
    writeFile(input("Player.app/Contents/Resources/intro.mov"));
    queue().add({fileUrl(m_folder.path() / "in")});

    EXPECT_THAT(names(), ElementsAre("a.mp4"));
}

TEST_F(QueueIntake, TakesNoLinkToItsOwnParent) {
    writeFile(input("a.mov"));
    fs::create_directory_symlink("..", input("loop"));
    fs::create_directory_symlink(m_folder.path() / "in", input("self"));
    queue().add({fileUrl(m_folder.path())});

    EXPECT_THAT(names(), ElementsAre("a.mov"));
}

TEST_F(QueueIntake, GoesOnPastAFolderThatMayNotBeRead) {
    writeFile(input("closed/b.mov"));
    writeFile(input("open/c.mov"));
    fs::permissions(input("closed"), fs::perms::none);
    {
        const test::WithoutPrivileges ordinary(m_folder.path());
        queue().add({fileUrl(input("closed")), fileUrl(m_folder.path() / "in"), url("a.mov")});
    }
    fs::permissions(input("closed"), fs::perms::owner_all);

    EXPECT_THAT(names(), ElementsAre("c.mov", "a.mov"));
}

TEST_F(QueueIntake, TakesAPathThatDoesNotExistAndShowsItsFailure) {
    m_engine.analyzes(input("missing.mov"),
                      [](const auto&) -> MediaInfo { throw ConvertError("No file."); });
    const auto job = addAnalyzed("missing.mov");

    EXPECT_EQ(job->state(), Job::State(Failed{"No file."}));
    EXPECT_EQ(queue().pendingCount(), 0);
}

TEST_F(QueueIntake, TakesFilesOfAnyKind) {
    queue().add({url("film.mkv"), url("notes.txt"), url("picture.png"), url("plain")});

    EXPECT_THAT(names(), ElementsAre("film.mkv", "notes.txt", "picture.png", "plain"));
}

TEST_F(QueueIntake, TakesANameOfAnyBytes) {
    queue().add({url("caf\xE9.mov"), url("50% #1?.mov")});

    EXPECT_THAT(names(), ElementsAre("caf\xE9.mov", "50% #1?.mov"));
}

TEST_F(QueueIntake, LeavesOutWhatIsNoFileOfThisMachine) {
    queue().add({QUrl("https://example.com/a.mov"), QUrl(), QUrl("file://server/b.mov"),
                 QUrl("file:///a%00b.mov"), url("c.mov")});

    EXPECT_THAT(names(), ElementsAre("c.mov"));
}

TEST_F(QueueIntake, GivesAJobTheDefaultsOfItsMoment) {
    const auto before = add("a.mov");
    queue().setDefaultTarget(Target::mov);
    queue().setDefaultSize(SizeOption::p720);
    queue().setDefaultRemoveAudio(true);
    const auto after = add("b.mov");
    queue().setDefaultTarget(Target::aac);

    EXPECT_EQ(before->target(), Target::mp4);
    EXPECT_EQ(before->size(), SizeOption::original);
    EXPECT_FALSE(before->removeAudio());
    EXPECT_EQ(after->target(), Target::mov);
    EXPECT_EQ(after->size(), SizeOption::p720);
    EXPECT_TRUE(after->removeAudio());
}

TEST_F(QueueIntake, SwitchesASongToM4aUnderAVideoDefault) {
    const auto job = addReady("song.wav", test::songInfo());

    EXPECT_EQ(job->target(), Target::m4a);
    EXPECT_EQ(job->blocker(), std::nullopt);
    EXPECT_EQ(queue().defaultTarget(), Target::mp4);
}

TEST_F(QueueIntake, LetsAnalysesFinishInAnyOrder) {
    if (std::thread::hardware_concurrency() < 2)
        GTEST_SKIP() << "one analysis at a time";
    std::array<Gate, 2> gates;
    for (std::size_t i = 0; i < gates.size(); ++i) {
        m_engine.analyzes(input(std::to_string(i)), [&gate = gates.at(i)](const auto& stop) {
            gate.pass(stop);
            return test::filmInfo();
        });
    }
    const auto first = add("0");
    const auto second = add("1");
    ASSERT_TRUE(spinUntilReached(gates[0]));
    ASSERT_TRUE(spinUntilReached(gates[1]));
    gates[1].open();
    ASSERT_TRUE(spinUntil([&] { return second->state() == Job::State(Ready{}); }));
    EXPECT_EQ(first->state(), Job::State(Analyzing{}));

    gates[0].open();
    ASSERT_TRUE(spinUntilAnalyzed());
    EXPECT_EQ(first->state(), Job::State(Ready{}));
    EXPECT_THAT(names(), ElementsAre("0", "1"));
}

TEST_F(QueueIntake, StartsNoConversion) {
    const QSignalSpy running(&queue(), &Queue::isRunningChanged);
    addReady("a.mov");
    queue().handleDrop(QList{url("b.mov")});
    spinFor(50ms);

    EXPECT_EQ(running.count(), 0);
    EXPECT_THAT(m_engine.conversions(), IsEmpty());
}

TEST_F(QueueIntake, LetsAJobGoThatIsRemovedWhileItIsAnalyzed) {
    Gate gate;
    m_engine.analyzes(input("a.mov"), [&](const auto& stop) {
        gate.pass(stop);
        return test::filmInfo();
    });
    auto job = add("a.mov");
    ASSERT_TRUE(spinUntilReached(gate));
    queue().remove(job.get());
    EXPECT_THAT(names(), IsEmpty());
    gate.open();
    ASSERT_TRUE(spinUntil([&] { return job->state() == Job::State(Ready{}); }));

    EXPECT_EQ(queue().pendingCount(), 0);
    const std::weak_ptr<Job> weak = job;
    job.reset();
    EXPECT_TRUE(spinUntil([&] { return weak.expired(); }));
}

TEST_F(QueueIntake, LetsAJobGoThatIsRemovedBeforeItsAnalysisBegins) {
    auto job = add("a.mov");
    queue().remove(job.get());
    const std::weak_ptr<Job> weak = job;
    job.reset();

    EXPECT_TRUE(spinUntil([&] { return weak.expired(); }));
    EXPECT_THAT(names(), IsEmpty());
}

TEST_F(QueueIntake, TakesManyFilesWithOneInsertion) {
    const QSignalSpy inserted(queue().jobList(), &JobList::rowsInserted);
    std::vector<fs::path> paths;
    for (int i = 0; i < 2000; ++i)
        paths.push_back(input(std::to_string(i) + ".mov"));
    queue().addPaths(paths);

    EXPECT_EQ(inserted.count(), 1);
    EXPECT_THAT(queue().jobs(), SizeIs(2000));
    EXPECT_TRUE(spinUntilAnalyzed());
    EXPECT_EQ(queue().pendingCount(), 2000);
}

TEST_F(QueueIntake, TakesDroppedFilesInTheOrderInWhichTheyArrive) {
    queue().handleDrop({pendingItem(), pendingItem(), pendingItem()});
    ASSERT_THAT(m_deliveries, SizeIs(3));
    EXPECT_THAT(names(), IsEmpty());
    for (const std::size_t i : {2u, 1u, 0u}) {
        m_deliveries.at(i)(url(std::to_string(i)));
        ASSERT_TRUE(spinUntil([&] { return queue().jobs().size() == 3 - i; }));
    }

    EXPECT_THAT(names(), ElementsAre("2", "1", "0"));
}

TEST_F(QueueIntake, TakesDroppedFilesThatArriveOnAnyThread) {
    queue().handleDrop({pendingItem(), pendingItem(), pendingItem()});
    {
        std::vector<std::jthread> threads;
        for (std::size_t i = 0; i < 3; ++i)
            threads.emplace_back([&, i] { m_deliveries.at(i)(url(std::to_string(i))); });
    }
    EXPECT_THAT(names(), IsEmpty());

    EXPECT_TRUE(spinUntil([&] { return queue().jobs().size() == 3; }));
    EXPECT_THAT(names(), UnorderedElementsAre("0", "1", "2"));
}

TEST_F(QueueIntake, TakesADroppedFileInALaterTurnEvenIfItIsThereAtOnce) {
    queue().handleDrop(QList{url("b.mov"), url("a.mov")});
    EXPECT_THAT(names(), IsEmpty());

    ASSERT_TRUE(spinUntil([&] { return queue().jobs().size() == 2; }));
    EXPECT_THAT(names(), ElementsAre("b.mov", "a.mov"));
}

TEST_F(QueueIntake, TakesEachDroppedFileByItself) {
    const QSignalSpy inserted(queue().jobList(), &JobList::rowsInserted);
    queue().handleDrop(QList{url("a.mov"), url("b.mov"), url("a.mov"), QUrl("https://x.org/c")});
    ASSERT_TRUE(spinUntil([&] { return queue().jobs().size() == 2; }));
    spinFor(20ms);

    EXPECT_THAT(names(), ElementsAre("a.mov", "b.mov"));
    EXPECT_EQ(inserted.count(), 2);
}

TEST_F(QueueIntake, TakesNothingOfADroppedItemWithoutAUrl) {
    queue().handleDrop({pendingItem(), pendingItem()});
    m_deliveries.at(0)(std::nullopt);
    m_deliveries.at(1)(url("b.mov"));

    ASSERT_TRUE(spinUntil([&] { return !queue().jobs().empty(); }));
    spinFor(20ms);
    EXPECT_THAT(names(), ElementsAre("b.mov"));
}

TEST_F(QueueIntake, TakesDefaultsForADroppedFileWhenItArrives) {
    queue().handleDrop({pendingItem()});
    queue().setDefaultTarget(Target::mov);
    m_deliveries.at(0)(url("a.mov"));
    ASSERT_TRUE(spinUntil([&] { return !queue().jobs().empty(); }));

    EXPECT_EQ(queue().jobs().front()->target(), Target::mov);
}

TEST_F(QueueIntake, AsksForFilesWithTheMessageAndTakesThemInTheirOrder) {
    writeFile(input("films/c.mov"));
    m_chooser.files = {url("b.mov"), fileUrl(input("films")), url("a.mov")};
    queue().chooseFiles();

    EXPECT_EQ(m_chooser.messages, QStringList("Choose video or audio files to convert"));
    EXPECT_THAT(names(), ElementsAre("b.mov", "c.mov", "a.mov"));
}

TEST_F(QueueIntake, TakesNothingWhenTheChoiceIsCancelled) {
    const auto job = add("a.mov");
    queue().chooseFiles();

    EXPECT_EQ(m_chooser.messages.size(), 1);
    EXPECT_THAT(names(), ElementsAre("a.mov"));
}

} // namespace
} // namespace boxlift
