#include "queue/queue.h"

#include "queue/file_url.h"
#include "queue/queue_fixture.h"
#include "support/media_generator.h"
#include "support/media_probe.h"

namespace boxlift {
namespace {

namespace fs = std::filesystem;
using test::MediaSpec;
using test::probe;
using test::readFile;
using test::spinUntil;
using test::writeFile;
using testing::AllOf;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using testing::VariantWith;

MediaSpec shortFilm() {
    return {.format = "mov", .seconds = 1, .video = {{}}, .audio = {{}}};
}

MediaSpec shortSong() {
    return {.format = "wav", .seconds = 1, .audio = {{.codec = "pcm_s16le"}}};
}

/// Takes seconds to encode.
MediaSpec longFilm() {
    return {.format = "mov", .seconds = 8, .video = {{.width = 640, .height = 480}}};
}

/// The queue over the real engine and real files.
class QueueMedia : public test::QueueFixture {
protected:
    QueueMedia() : QueueFixture(converterEngine()) {}

    fs::path make(const std::string& name, const MediaSpec& spec) {
        fs::create_directories(input(name).parent_path());
        test::makeMedia(input(name), spec);
        return input(name);
    }

    std::shared_ptr<Job> addMade(const std::string& name, const MediaSpec& spec) {
        make(name, spec);
        auto job = addAnalyzed(name);
        EXPECT_EQ(job->state(), Job::State(Ready{}));
        return job;
    }

    /// The names in the output folder, hidden ones too.
    std::vector<std::string> outputs() const {
        std::vector<std::string> names;
        if (!fs::exists(outputDir()))
            return names;
        for (const auto& entry : fs::directory_iterator(outputDir()))
            names.push_back(entry.path().filename().native());
        return names;
    }

    static auto isDone(const fs::path& output, Mode mode) {
        return VariantWith<Done>(AllOf(Field(&Done::output, output), Field(&Done::mode, mode),
                                       Field(&Done::seconds, testing::Gt(0.0))));
    }

    static bool isFailed(const Job& job) {
        return job.stateKind() == Job::StateKind::Failed && !job.message().isEmpty();
    }

    bool spinUntilHalfway(const Job& job) {
        return spinUntil([&] { return job.progress() > 0.1; });
    }
};

TEST_F(QueueMedia, AnalyzesAndCopiesAFilm) {
    const auto job = addMade("a.mov", shortFilm());
    EXPECT_TRUE(job->info()->hasVideo);
    EXPECT_TRUE(job->info()->hasAudio);
    ASSERT_EQ(job->plan()->mode, Mode::boxlift);
    const test::JobLog log(*job);
    queue().startAll();
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_THAT(job->state(), isDone(output("a.mp4"), Mode::boxlift));
    EXPECT_EQ(log.events().back(), "done");
    EXPECT_EQ(probe(output("a.mp4")).video().payloadHashes(),
              probe(input("a.mov")).video().payloadHashes());
    EXPECT_THAT(outputs(), ElementsAre("a.mp4"));
}

TEST_F(QueueMedia, EncodesWhereTheSizeIsLimited) {
    const auto job = addMade("a.mov", shortFilm());
    job->setSize(SizeOption::p720);
    ASSERT_EQ(job->plan()->mode, Mode::reencode);
    queue().startAll();
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_THAT(job->state(), isDone(output("a.mp4"), Mode::reencode));
    EXPECT_EQ(probe(output("a.mp4")).video().codec, "h264");
}

TEST_F(QueueMedia, LeavesOutTheSoundOnRequest) {
    queue().setDefaultRemoveAudio(true);
    const auto job = addMade("a.mov", shortFilm());
    queue().startAll();
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_THAT(job->state(), isDone(output("a.mp4"), Mode::boxlift));
    EXPECT_THAT(probe(output("a.mp4")).all(test::StreamKind::audio), IsEmpty());
}

TEST_F(QueueMedia, EncodesASongThatItSwitchedToM4a) {
    const auto job = addMade("song.wav", shortSong());
    EXPECT_EQ(job->target(), Target::m4a);
    queue().startAll();
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_THAT(job->state(), isDone(output("song.m4a"), Mode::reencode));
    EXPECT_EQ(probe(output("song.m4a")).audio().codec, "aac");
}

TEST_F(QueueMedia, ConvertsAMixedListAndSaysWhatItCannotConvert) {
    const auto film = addMade("film.mov", shortFilm());
    writeFile(input("notes.txt"), "not a film");
    const auto notes = addAnalyzed("notes.txt");
    const auto song = addMade("song.wav", shortSong());
    writeFile(input("film.mkv"), "refused without a look");
    const auto refused = addAnalyzed("film.mkv");
    queue().startAll();
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_EQ(film->stateKind(), Job::StateKind::Done);
    EXPECT_EQ(song->stateKind(), Job::StateKind::Done);
    EXPECT_TRUE(isFailed(*notes));
    EXPECT_TRUE(isFailed(*refused));
    EXPECT_EQ(notes->info(), std::nullopt);
    EXPECT_THAT(outputs(), UnorderedElementsAre("film.mp4", "song.m4a"));
}

TEST_F(QueueMedia, ShowsTheFailureOfAPathThatDoesNotExist) {
    const auto job = addAnalyzed("missing.mov");

    EXPECT_TRUE(isFailed(*job));
    EXPECT_FALSE(job->canConvert());
}

TEST_F(QueueMedia, ShowsTheFailureOfAFileThatVanishesBeforeItsAnalysis) {
    make("a.mov", shortFilm());
    queue().handleDrop(QList{fileUrl(input("a.mov"))});
    fs::remove(input("a.mov"));
    ASSERT_TRUE(spinUntil([&] { return !queue().jobs().empty(); }));
    ASSERT_TRUE(spinUntilAnalyzed());

    EXPECT_TRUE(isFailed(*queue().jobs().front()));
}

TEST_F(QueueMedia, ShowsTheFailureOfAFileThatVanishesBeforeItsRun) {
    const auto gone = addMade("a.mov", shortFilm());
    const auto there = addMade("b.mov", shortFilm());
    fs::remove(input("a.mov"));
    queue().startAll();
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_TRUE(isFailed(*gone));
    EXPECT_TRUE(gone->canConvert());
    EXPECT_EQ(there->stateKind(), Job::StateKind::Done);
    EXPECT_THAT(outputs(), ElementsAre("b.mp4"));
}

TEST_F(QueueMedia, CountsUpToAFreeNameAndReplacesNothing) {
    writeFile(output("a.mp4"), "mine");
    writeFile(output("a 2.mp4"), "mine");
    const auto job = addMade("a.mov", shortFilm());
    queue().startAll();
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_THAT(job->state(), isDone(output("a 3.mp4"), Mode::boxlift));
    EXPECT_EQ(readFile(output("a.mp4")), "mine");
    EXPECT_EQ(readFile(output("a 2.mp4")), "mine");
}

TEST_F(QueueMedia, ConvertsIntoTheFilesOwnFolder) {
    MediaSpec clip = shortFilm();
    clip.format = "mp4";
    const auto job = addMade("clip.mp4", clip);
    const std::string before = readFile(input("clip.mp4"));
    queue().setOutputDir(input("clip.mp4").parent_path());
    queue().startAll();
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_THAT(job->state(), isDone(input("clip 2.mp4"), Mode::boxlift));
    EXPECT_TRUE(readFile(input("clip.mp4")) == before);
}

TEST_F(QueueMedia, ConvertsADoneJobOnceMoreUnderAnotherName) {
    const auto job = addMade("a.mov", shortFilm());
    queue().startAll();
    ASSERT_TRUE(spinUntilIdle());
    queue().applyDefaultsToAll();
    queue().startAll();
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_THAT(job->state(), isDone(output("a 2.mp4"), Mode::boxlift));
    EXPECT_TRUE(readFile(output("a.mp4")) == readFile(output("a 2.mp4")));
}

TEST_F(QueueMedia, LeavesNothingOfAnEncodeThatIsCancelledInTheMiddle) {
    const auto job = addMade("a.mov", longFilm());
    job->setSize(SizeOption::p720);
    queue().startAll();
    ASSERT_TRUE(spinUntilHalfway(*job));
    queue().task()->cancel();
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_EQ(job->state(), Job::State(Ready{}));
    EXPECT_EQ(job->progress(), 0.0);
    EXPECT_THAT(outputs(), IsEmpty());
}

TEST_F(QueueMedia, LeavesNothingOfARunningJobThatIsRemoved) {
    const auto job = addMade("a.mov", longFilm());
    job->setSize(SizeOption::p720);
    queue().convert(job.get());
    ASSERT_TRUE(spinUntilHalfway(*job));
    queue().remove(job.get());
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_EQ(job->state(), Job::State(Ready{}));
    EXPECT_THAT(outputs(), IsEmpty());
}

TEST_F(QueueMedia, LeavesNothingOfARunThatTheEndOfTheApplicationMeets) {
    const auto job = addMade("a.mov", longFilm());
    job->setSize(SizeOption::p720);
    queue().startAll();
    ASSERT_TRUE(spinUntilHalfway(*job));
    endQueue();

    EXPECT_EQ(job->state(), Job::State(Ready{}));
    EXPECT_THAT(outputs(), IsEmpty());
}

TEST_F(QueueMedia, ShowsAFailureWhenTheOutputFolderIsRemovedDuringARun) {
    const auto first = addMade("a.mov", longFilm());
    first->setSize(SizeOption::p720);
    const auto second = addMade("b.mov", shortFilm());
    queue().startAll();
    ASSERT_TRUE(spinUntilHalfway(*first));
    fs::remove_all(outputDir());
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_TRUE(isFailed(*first));
    EXPECT_THAT(second->state(), isDone(output("b.mp4"), Mode::boxlift));
    EXPECT_THAT(outputs(), ElementsAre("b.mp4"));
}

TEST_F(QueueMedia, ShowsAFailureWhenTheOutputFolderCannotBeMade) {
    const auto job = addMade("a.mov", shortFilm());
    writeFile(outputDir(), "a file");
    queue().startAll();
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_TRUE(isFailed(*job));
    EXPECT_EQ(readFile(outputDir()), "a file");
    fs::remove(outputDir());
    queue().startAll();
    ASSERT_TRUE(spinUntilIdle());
    EXPECT_EQ(job->stateKind(), Job::StateKind::Done);
}

TEST_F(QueueMedia, ReplacesNothingThatTakesTheNameMeanwhile) {
    const auto job = addMade("a.mov", longFilm());
    job->setSize(SizeOption::p720);
    queue().startAll();
    ASSERT_TRUE(spinUntilHalfway(*job));
    writeFile(output("a.mp4"), "mine");
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_TRUE(isFailed(*job));
    EXPECT_EQ(readFile(output("a.mp4")), "mine");
    EXPECT_THAT(outputs(), ElementsAre("a.mp4"));
}

TEST_F(QueueMedia, ConvertsFilesWhoseNamesAreNoText) {
    const auto job = addMade("caf\xE9 %03d #1?.mov", shortFilm());
    queue().startAll();
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_THAT(job->state(), isDone(output("caf\xE9 %03d #1?.mp4"), Mode::boxlift));
    EXPECT_TRUE(fs::exists(filePath(job->output())));
}

} // namespace
} // namespace boxlift
