#include <algorithm>

#include <gtest/gtest.h>

#include <QMimeData>
#include <QTest>

#include "ui/support/font_size.h"
#include "ui/support/stage.h"
#include "ui/support/url_catcher.h"
#include "ui/support/window_host.h"

namespace boxlift::test {
namespace {

using namespace std::string_literals;

class ContentView : public testing::Test {
protected:
    bool shows(const char* name) { return host.shown(name) != nullptr; }
    bool enabled(const char* name) { return host.shown(name)->isEnabled(); }
    std::string text(const char* name) { return host.text(name).value_or(QString()).toStdString(); }
    double left(const char* name) { return host.shown(name)->mapToScene(QPointF()).x(); }
    void pick(const char* picker, int steps) {
        host.click(host.shown(picker));
        for (int i = 0; i < steps; ++i)
            host.key(Qt::Key_Down);
        host.key(Qt::Key_Return);
    }

    Stage stage;
    WindowHost host{QStringLiteral("ContentView"),
                    {{QStringLiteral("queue"), QVariant::fromValue(&stage.queue())}},
                    {780, 520}};
};

TEST_F(ContentView, InvitesToDropFilesWhileItIsEmpty) {
    EXPECT_TRUE(shows("emptyState"));
    EXPECT_FALSE(shows("jobList"));
    EXPECT_EQ(text("emptyTitle"), "Drop videos or audio here");
    EXPECT_EQ(text("emptyHint"),
              "MOV, MP4, M4V, M4A, MP3, WAV, AIFF, FLAC and anything else macOS can open");
    EXPECT_EQ(text("emptyAddFiles"), "Add Files…");
}

TEST_F(ContentView, ShowsTheListFromTheFirstFileToTheLast) {
    Job* job = stage.addReady("film.mov");
    EXPECT_FALSE(shows("emptyState"));
    EXPECT_TRUE(shows("jobList"));
    stage.queue().remove(job);
    EXPECT_TRUE(shows("emptyState"));
    EXPECT_FALSE(shows("jobList"));
}

TEST_F(ContentView, OpensThePanelFromBothButtons) {
    host.click(host.shown("emptyAddFiles"));
    EXPECT_EQ(stage.chooser.messages.size(), 1);
    host.click(host.shown("addFiles"));
    EXPECT_EQ(stage.chooser.messages.size(), 2);
    EXPECT_EQ(text("addFiles"), "Add Files…");
}

TEST_F(ContentView, HasTheSettingsOfNewFiles) {
    EXPECT_EQ(host.shown("defaultTarget")->property("displayText").toString().toStdString(),
              "MP4 (H.264 + AAC)");
    EXPECT_EQ(host.shown("defaultSize")->property("displayText").toString().toStdString(),
              "Original size");
    EXPECT_EQ(host.shown("defaultTarget")->width(), 190);
    EXPECT_EQ(host.shown("defaultSize")->width(), 130);
    EXPECT_EQ(text("defaultRemoveAudio"), "Remove audio");
}

TEST_F(ContentView, WritesTheSettingsOfNewFilesIntoTheQueue) {
    Job* job = stage.addReady("film.mov");
    pick("defaultTarget", 1);
    pick("defaultSize", 2);
    host.click(host.shown("defaultRemoveAudio"));
    EXPECT_EQ(stage.queue().defaultTarget(), Target::mov);
    EXPECT_EQ(stage.queue().defaultSize(), SizeOption::p720);
    EXPECT_TRUE(stage.queue().defaultRemoveAudio());
    EXPECT_EQ(job->target(), Target::mp4) << "files that are there keep theirs";
}

TEST_F(ContentView, HidesWhatAnAudioTargetDoesNotHaveAndKeepsItsValues) {
    stage.queue().setDefaultSize(SizeOption::p720);
    stage.queue().setDefaultRemoveAudio(true);
    stage.queue().setDefaultTarget(Target::aac);
    EXPECT_FALSE(shows("defaultSize"));
    EXPECT_FALSE(shows("defaultRemoveAudio"));
    EXPECT_TRUE(shows("applyToAll"));
    stage.queue().setDefaultTarget(Target::mov);
    EXPECT_EQ(host.shown("defaultSize")->property("displayText").toString().toStdString(), "720p");
    EXPECT_TRUE(host.shown("defaultRemoveAudio")->property("checked").toBool());
}

TEST_F(ContentView, AppliesTheSettingsToAllFilesUnlessOneConverts) {
    EXPECT_FALSE(enabled("applyToAll"));
    Job* job = stage.addReady("film.mov");
    stage.queue().setDefaultSize(SizeOption::p720);
    ASSERT_TRUE(enabled("applyToAll"));
    host.click(host.shown("applyToAll"));
    EXPECT_EQ(job->size(), SizeOption::p720);
    stage.convert(job);
    EXPECT_FALSE(enabled("applyToAll"));
    stage.finish(Mode::reencode);
    EXPECT_TRUE(enabled("applyToAll"));
}

TEST_F(ContentView, ShowsTheOutputFolderAndChoosesAnother) {
    stage.queue().setOutputDir("/media/100% Å");
    EXPECT_EQ(text("outputPath"), "/media/100% Å");
    stage.chooser.folder = QUrl::fromLocalFile(QDir::homePath() + QStringLiteral("/Out"));
    EXPECT_EQ(text("chooseFolder"), "Choose…");
    host.click(host.shown("chooseFolder"));
    EXPECT_EQ(stage.chooser.prompts.size(), 1);
    EXPECT_EQ(text("outputPath"), "~/Out");
}

TEST_F(ContentView, CutsALongOutputFolderInTheMiddle) {
    stage.queue().setOutputDir("/media/" + std::string(200, 'x') + "/last");
    QTest::qWait(30);
    EXPECT_LE(host.shown("outputPath")->width(), 260);
    EXPECT_TRUE(host.shown("outputPath")->property("truncated").toBool());
    EXPECT_EQ(host.shown("outputPath")->property("elide").toInt(), Qt::ElideMiddle);
    EXPECT_LE(left("run") + host.shown("run")->width(), 780 - 16);
    host.window().resize(1400, 520);
    host.root().setSize({1400, 520});
    QTest::qWait(30);
    EXPECT_EQ(host.shown("outputPath")->width(), 260);
}

TEST_F(ContentView, RevealsTheOutputFolderInItsParent) {
    const UrlCatcher opened;
    stage.queue().setOutputDir("/media/out");
    EXPECT_EQ(text("openFolder"), "Open");
    host.click(host.shown("openFolder"));
    ASSERT_EQ(opened.caught.size(), 1);
    EXPECT_EQ(opened.caught.front(), QUrl(QStringLiteral("file:///media")));
}

TEST_F(ContentView, HasRoomForLargerText) {
    stage.addReady("film.mov");
    stage.queue().setOutputDir("/media/" + std::string(200, 'x') + "/last");
    const FontSize large(24);
    const double scale = 1.6;
    host.root().setSize({780 * scale, 520 * scale});
    QTest::qWait(50);
    EXPECT_EQ(host.shown("defaultTarget")->width(), 190 * scale);
    EXPECT_EQ(host.shown("target")->width(), 100 * scale);
    EXPECT_LE(left("run") + host.shown("run")->width(), (780 - 16) * scale + 1);
    EXPECT_LE(left("applyToAll") + host.shown("applyToAll")->width(), (780 - 16) * scale + 1);
    for (const char* button : {"chooseFolder", "openFolder", "addFiles", "clearFinished", "run"}) {
        const QQuickItem* control = host.shown(button);
        EXPECT_GE(control->width(), control->implicitWidth()) << button;
    }
}

TEST_F(ContentView, ClearsWhatIsFinished) {
    stage.addReady("film.mov");
    EXPECT_FALSE(enabled("clearFinished"));
    stage.addDone("done.mov", Mode::boxlift);
    ASSERT_TRUE(enabled("clearFinished"));
    EXPECT_EQ(text("clearFinished"), "Clear Finished");
    host.click(host.shown("clearFinished"));
    EXPECT_EQ(stage.queue().jobs().size(), 1U);
    EXPECT_FALSE(enabled("clearFinished"));
}

TEST_F(ContentView, ConvertsAllAndStops) {
    EXPECT_EQ(text("run"), "Convert All");
    EXPECT_FALSE(enabled("run"));
    Job* job = stage.addReady("film.mov");
    ASSERT_TRUE(enabled("run"));
    EXPECT_TRUE(host.shown("run")->property("prominent").toBool());
    host.click(host.shown("run"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return job->stateKind() == Job::StateKind::Converting; }));
    EXPECT_EQ(text("run"), "Stop");
    EXPECT_FALSE(host.shown("run")->property("prominent").toBool());
    for (const char* button : {"run", "chooseFolder", "openFolder", "addFiles"})
        EXPECT_TRUE(enabled(button)) << button;
    host.click(host.shown("run"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return !stage.queue().isRunning(); }));
    EXPECT_EQ(job->stateKind(), Job::StateKind::Ready);
    EXPECT_EQ(text("run"), "Convert All");
}

TEST_F(ContentView, ReachesEveryControlWithTheKeyboard) {
    stage.addReady("film.mov");
    std::vector<std::string> reached;
    for (int i = 0; i < 14; ++i) {
        host.key(Qt::Key_Tab);
        reached.push_back(host.focused().toStdString());
    }
    EXPECT_EQ(reached,
              (std::vector{"target"s, "size"s, "removeAudio"s, "convert"s, "remove"s,
                           "defaultTarget"s, "defaultSize"s, "defaultRemoveAudio"s, "applyToAll"s,
                           "chooseFolder"s, "openFolder"s, "addFiles"s, "run"s, "target"s}));
}

TEST_F(ContentView, HighlightsADragOfFilesAndAddsThemOneByOne) {
    writeFile(stage.path("b c.mov"));
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QStringLiteral("/nowhere/a.mov")),
                  QUrl::fromLocalFile(QString::fromStdString(stage.path("b c.mov").string()))});
    QDragEnterEvent enter(QPoint(300, 200), Qt::CopyAction, &data, Qt::LeftButton, {});
    QCoreApplication::sendEvent(&host.window(), &enter);
    EXPECT_TRUE(enter.isAccepted());
    ASSERT_TRUE(shows("dragHighlight"));
    const QQuickItem* highlight = host.shown("dragHighlight");
    EXPECT_EQ(highlight->mapRectToScene(highlight->boundingRect()), QRectF(8, 8, 764, 504));
    QDropEvent drop(QPointF(300, 200), Qt::CopyAction, &data, Qt::LeftButton, {});
    QCoreApplication::sendEvent(&host.window(), &drop);
    EXPECT_TRUE(drop.isAccepted());
    EXPECT_FALSE(shows("dragHighlight"));
    EXPECT_TRUE(stage.queue().jobs().empty()) << "acceptance does not wait for the files";
    EXPECT_TRUE(QTest::qWaitFor([&] { return stage.queue().jobs().size() == 2; }));
}

TEST_F(ContentView, TakesDropsAboveItsControlsToo) {
    stage.addReady("film.mov");
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QStringLiteral("/nowhere/a.mov"))});
    for (const char* place : {"target", "run", "fileName"}) {
        const QPoint point = host.shown(place)->mapToScene(QPointF(5, 5)).toPoint();
        QDragEnterEvent enter(point, Qt::CopyAction, &data, Qt::LeftButton, {});
        QCoreApplication::sendEvent(&host.window(), &enter);
        EXPECT_TRUE(enter.isAccepted()) << place;
        QDragLeaveEvent leave;
        QCoreApplication::sendEvent(&host.window(), &leave);
        EXPECT_FALSE(shows("dragHighlight"));
    }
}

TEST_F(ContentView, LetsTheMouseThroughItsHighlight) {
    stage.addReady("film.mov");
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QStringLiteral("/nowhere/a.mov"))});
    QDragEnterEvent enter(QPoint(300, 200), Qt::CopyAction, &data, Qt::LeftButton, {});
    QCoreApplication::sendEvent(&host.window(), &enter);
    ASSERT_TRUE(shows("dragHighlight"));
    host.click(host.shown("addFiles"));
    EXPECT_EQ(stage.chooser.messages.size(), 1);
}

} // namespace
} // namespace boxlift::test
