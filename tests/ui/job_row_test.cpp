#include <gtest/gtest.h>

#include <QTest>

#include "ui/support/pixels.h"
#include "ui/support/stage.h"
#include "ui/support/url_catcher.h"
#include "ui/support/window_host.h"

namespace boxlift::test {
namespace {

using namespace std::string_literals;

class JobRow : public testing::Test {
protected:
    void show(Job* job, QSize size = {760, 300}) {
        host = std::make_unique<WindowHost>(
            QStringLiteral("JobRow"),
            QVariantMap{{QStringLiteral("job"), QVariant::fromValue(job)},
                        {QStringLiteral("queue"), QVariant::fromValue(&stage.queue())}},
            size);
    }

    bool shows(const char* name) { return host->shown(name) != nullptr; }
    bool enabled(const char* name) { return host->shown(name)->isEnabled(); }
    /// Empty when it is not shown.
    std::string text(const char* name) {
        return host->text(name).value_or(QString()).toStdString();
    }
    std::string symbol(const char* name) {
        return host->shown(name)->property("name").toString().toStdString();
    }
    QColor color(const char* name) { return host->shown(name)->property("color").value<QColor>(); }
    std::vector<std::string> choices(const char* name) {
        std::vector<std::string> texts;
        for (const QString& choice : host->shown(name)->property("model").toStringList())
            texts.push_back(choice.toStdString());
        return texts;
    }

    Stage stage;
    std::unique_ptr<WindowHost> host;
};

TEST_F(JobRow, SaysThatAFileIsBeingRead) {
    show(stage.addReading("take 3.mkv"));
    EXPECT_EQ(text("fileName"), "take 3.mkv");
    EXPECT_EQ(text("statusText"), "Reading…");
    EXPECT_EQ(symbol("kindIcon"), "questionmark.circle");
    EXPECT_FALSE(shows("summary"));
    EXPECT_FALSE(shows("settings"));
    EXPECT_FALSE(shows("convert"));
    EXPECT_FALSE(shows("reveal"));
    EXPECT_TRUE(shows("remove"));
}

TEST_F(JobRow, ShowsWhatAReadyFileHoldsAndWhatWillBeDone) {
    Job* job = stage.addReady("film.mov");
    show(job);
    EXPECT_EQ(symbol("kindIcon"), "film");
    EXPECT_EQ(text("summary"), job->summary().toStdString());
    EXPECT_FALSE(text("summary").empty());
    EXPECT_EQ(text("badgeText"), "BOXLIFT");
    EXPECT_EQ(text("planText"), job->planDetail().toStdString());
    EXPECT_FALSE(text("planText").empty());
    EXPECT_TRUE(shows("convert"));
    EXPECT_TRUE(shows("remove"));
    EXPECT_FALSE(shows("reveal"));
    EXPECT_FALSE(shows("statusText"));
}

TEST_F(JobRow, FollowsTheSettings) {
    Job* job = stage.addReady("film.mov");
    show(job);
    job->setSize(SizeOption::p720);
    EXPECT_EQ(text("badgeText"), "RE-ENCODE");
    EXPECT_EQ(text("planText"), job->planDetail().toStdString());
}

TEST_F(JobRow, ShowsAWaveformForSound) {
    show(stage.addReady("song.mp3", song()));
    EXPECT_EQ(symbol("kindIcon"), "waveform");
}

TEST_F(JobRow, ShowsWhyAFileCannotBeConvertedInsteadOfAPlan) {
    Job* job = stage.addReady("silent.mov", silentFilm());
    job->setTarget(Target::m4a);
    show(job);
    EXPECT_EQ(text("statusText"), "This file has no audio track to extract.");
    EXPECT_EQ(symbol("statusIcon"), "exclamationmark.circle");
    EXPECT_EQ(color("statusText"), QColor("#a14700"));
    EXPECT_FALSE(shows("planText"));
    EXPECT_FALSE(shows("convert"));
    EXPECT_TRUE(shows("remove"));
}

TEST_F(JobRow, OffersTheTargetsAndSizesInTheirOrder) {
    show(stage.addReady("film.mov"));
    EXPECT_EQ(choices("target"), (std::vector{"MP4"s, "MOV"s, "M4A"s, "AAC 128k"s}));
    EXPECT_EQ(choices("size"), (std::vector{"Original size"s, "1080p"s, "720p"s}));
    EXPECT_EQ(host->shown("target")->width(), 100);
    EXPECT_EQ(host->shown("size")->width(), 120);
    EXPECT_EQ(text("removeAudio"), "Remove audio");
}

TEST_F(JobRow, WritesThePickedTargetIntoTheJob) {
    Job* job = stage.addReady("film.mov");
    show(job);
    host->click(host->shown("target"));
    host->key(Qt::Key_Down);
    host->key(Qt::Key_Return);
    EXPECT_EQ(job->target(), Target::mov);
    host->click(host->shown("size"));
    host->key(Qt::Key_Down);
    host->key(Qt::Key_Return);
    EXPECT_EQ(job->size(), SizeOption::p1080);
}

TEST_F(JobRow, ShowsWhatOthersWriteIntoTheJobAlsoAfterAPick) {
    Job* job = stage.addReady("film.mov");
    show(job);
    host->click(host->shown("target"));
    host->key(Qt::Key_Down);
    host->key(Qt::Key_Return);
    host->click(host->shown("removeAudio"));
    ASSERT_TRUE(job->removeAudio());
    job->setTarget(Target::mp4);
    job->setSize(SizeOption::p720);
    job->setRemoveAudio(false);
    EXPECT_EQ(host->shown("target")->property("displayText").toString().toStdString(), "MP4");
    EXPECT_EQ(host->shown("size")->property("displayText").toString().toStdString(), "720p");
    EXPECT_FALSE(host->shown("removeAudio")->property("checked").toBool());
    host->click(host->shown("removeAudio"));
    EXPECT_TRUE(job->removeAudio());
}

TEST_F(JobRow, HasNoSizeNorSoundToRemoveForAnAudioTarget) {
    Job* job = stage.addReady("film.mov");
    show(job);
    for (const Target target : {Target::m4a, Target::aac}) {
        job->setTarget(target);
        EXPECT_TRUE(shows("target"));
        EXPECT_FALSE(shows("size"));
        EXPECT_FALSE(shows("removeAudio"));
    }
    job->setTarget(Target::mov);
    EXPECT_TRUE(shows("size"));
    EXPECT_TRUE(shows("removeAudio"));
}

TEST_F(JobRow, HasNoSoundToRemoveFromAnAudioFile) {
    Job* job = stage.addReady("song.mp3", song());
    job->setTarget(Target::mp4);
    show(job);
    EXPECT_TRUE(shows("size"));
    EXPECT_FALSE(shows("removeAudio"));
    EXPECT_EQ(text("statusText"), "This is an audio file. Choose M4A or AAC audio only.");
}

TEST_F(JobRow, ShowsTheProgressOfAConversion) {
    Job* job = stage.addReady("film.mov");
    show(job);
    stage.convert(job);
    EXPECT_EQ(text("percentText"), "0%");
    EXPECT_EQ(text("planText"), job->planDetail().toStdString());
    stage.report(0.999);
    ASSERT_TRUE(QTest::qWaitFor([&] { return job->progress() > 0.9; }));
    EXPECT_EQ(text("percentText"), "99%");
    EXPECT_DOUBLE_EQ(host->shown("progressBar")->property("value").toDouble(), 0.999);
    EXPECT_TRUE(shows("target"));
    for (const char* setting : {"target", "size", "removeAudio"})
        EXPECT_FALSE(enabled(setting)) << setting;
    EXPECT_FALSE(shows("convert"));
    EXPECT_TRUE(enabled("remove"));
    stage.finish(Mode::boxlift);
}

TEST_F(JobRow, ShowsACopyThatIsDone) {
    Job* job = stage.addDone("film.mov", Mode::boxlift);
    show(job);
    EXPECT_DOUBLE_EQ(host->shown("progressBar")->property("value").toDouble(), 1);
    EXPECT_EQ(host->shown("progressBar")->property("tint").value<QColor>(), QColor("#34b857"));
    EXPECT_EQ(text("badgeText"), "BOXLIFT");
    EXPECT_EQ(text("planText").substr(0, 13), "Boxlifted in ");
    EXPECT_NE(text("planText").find("s, no quality loss"), std::string::npos);
    EXPECT_FALSE(shows("percentText"));
    EXPECT_TRUE(enabled("target"));
}

TEST_F(JobRow, ShowsTheModeThatWasUsedNotTheOneThatWasPlanned) {
    Job* job = stage.addDone("film.mov", Mode::reencode);
    show(job);
    EXPECT_EQ(text("badgeText"), "RE-ENCODE");
    EXPECT_EQ(text("planText").substr(0, 14), "Re-encoded in ");
    EXPECT_EQ(text("planText").find("quality"), std::string::npos);
}

TEST_F(JobRow, IsReadyAgainWhenASettingOfADoneFileChanges) {
    Job* job = stage.addDone("film.mov", Mode::boxlift);
    show(job);
    EXPECT_FALSE(shows("convert"));
    job->setSize(SizeOption::p720);
    EXPECT_TRUE(shows("convert"));
    EXPECT_FALSE(shows("reveal"));
    EXPECT_FALSE(shows("progressBar"));
}

TEST_F(JobRow, RevealsTheOutputOfADoneFile) {
    Job* job = stage.addDone("film.mov", Mode::boxlift);
    const UrlCatcher opened;
    show(job);
    host->click(host->shown("reveal"));
    ASSERT_EQ(opened.caught.size(), 1);
    EXPECT_EQ(opened.caught.front().toLocalFile().toStdString(), stage.outputDir().string());
}

TEST_F(JobRow, ShowsAFailureInRed) {
    show(stage.addFailed("old.wmv", "This file could not be opened."));
    EXPECT_EQ(text("statusText"), "This file could not be opened.");
    EXPECT_EQ(symbol("statusIcon"), "exclamationmark.triangle.fill");
    EXPECT_EQ(color("statusText"), QColor("#cf1d17"));
    EXPECT_FALSE(shows("convert"));
    EXPECT_FALSE(shows("settings"));
    EXPECT_TRUE(shows("remove"));
}

TEST_F(JobRow, OffersAFailedConversionAgain) {
    Job* job = stage.addReady("film.mov");
    stage.convert(job);
    stage.fail("The disk is full.");
    show(job);
    EXPECT_EQ(text("statusText"), "The disk is full.");
    EXPECT_TRUE(enabled("convert"));
    EXPECT_TRUE(enabled("target"));
}

TEST_F(JobRow, WrapsALongMessageAndGrowsWithIt) {
    Job* job = stage.addFailed("a.wmv", "Short.");
    Job* longer =
        stage.addFailed("b.wmv", "A sentence that goes on and on. A sentence that goes on and on. "
                                 "A sentence that goes on and on. A sentence that goes on and on. "
                                 "A sentence that goes on and on. A sentence that goes on and on.");
    show(job);
    const double before = host->root().implicitHeight();
    host->root().setProperty("job", QVariant::fromValue(longer));
    EXPECT_TRUE(QTest::qWaitFor([&] { return host->root().implicitHeight() > before + 10; }));
    const QQuickItem* message = host->shown("statusText");
    EXPECT_LE(message->mapToScene(QPointF(message->width(), message->height())).y(),
              host->root().implicitHeight());
}

TEST_F(JobRow, ConvertsItsJob) {
    Job* job = stage.addReady("film.mov");
    show(job);
    host->click(host->shown("convert"));
    EXPECT_TRUE(stage.queue().isRunning());
    ASSERT_TRUE(QTest::qWaitFor([&] { return job->stateKind() == Job::StateKind::Converting; }));
    stage.finish(Mode::boxlift);
}

TEST_F(JobRow, CannotBeConvertedWhileAnotherOneConverts) {
    Job* job = stage.addReady("film.mov");
    Job* other = stage.addReady("other.mov");
    show(job);
    EXPECT_TRUE(enabled("convert"));
    stage.convert(other);
    EXPECT_FALSE(enabled("convert"));
    EXPECT_TRUE(enabled("remove"));
    stage.finish(Mode::boxlift);
    EXPECT_TRUE(enabled("convert"));
}

TEST_F(JobRow, RemovesItsJob) {
    Job* job = stage.addReady("film.mov");
    const auto kept = job->shared_from_this();
    show(job);
    host->click(host->shown("remove"));
    EXPECT_TRUE(stage.queue().jobs().empty());
}

TEST_F(JobRow, CutsALongNameInTheMiddle) {
    show(stage.addReady(std::string(120, 'x').append(".mov")));
    const QQuickItem* name = host->shown("fileName");
    EXPECT_TRUE(name->property("truncated").toBool());
    EXPECT_EQ(name->property("lineCount").toInt(), 1);
    EXPECT_LT(name->mapToScene(QPointF(name->width(), 0)).x(),
              host->shown("target")->mapToScene(QPointF()).x());
}

TEST_F(JobRow, ShowsANameAsItIs) {
    show(stage.addReading("<i>slanted<i> &amp; 100%.mov"));
    EXPECT_EQ(text("fileName"), "<i>slanted<i> &amp; 100%.mov");
    EXPECT_EQ(host->shown("fileName")->property("textFormat").toInt(), Qt::PlainText);
}

TEST_F(JobRow, LinesUpThePickersOfAllCards) {
    Job* ready = stage.addReady("film.mov");
    Job* done = stage.addDone("done.mov", Mode::boxlift);
    Job* blocked = stage.addReady("silent.mov", silentFilm());
    blocked->setTarget(Target::aac);
    show(ready);
    const auto right = [&] {
        const QQuickItem* settings = host->shown("settings");
        return settings->mapToScene(QPointF(settings->width(), 0)).x();
    };
    const double edge = right();
    for (Job* job : {done, blocked}) {
        host->root().setProperty("job", QVariant::fromValue(job));
        QTest::qWait(30);
        EXPECT_EQ(right(), edge);
    }
}

TEST_F(JobRow, HelpsWithItsButtons) {
    Job* job = stage.addReady("film.mov");
    show(job);
    EXPECT_EQ(host->item("convert")->property("help").toString().toStdString(),
              "Convert this file");
    EXPECT_EQ(host->item("remove")->property("help").toString().toStdString(), "Remove from queue");
    EXPECT_EQ(host->item("reveal")->property("help").toString().toStdString(), "Reveal in Finder");
}

} // namespace
} // namespace boxlift::test
