#include <gtest/gtest.h>

#include <QTest>

#include "model/convert_error.h"
#include "ui/support/frame_counter.h"
#include "ui/support/stage.h"
#include "ui/support/window_host.h"

namespace boxlift::test {
namespace {

class JobListView : public testing::Test {
protected:
    std::filesystem::path path(int index) const {
        return stage.path("file " + std::to_string(index) + ".mov");
    }

    /// Every third file is one that cannot be opened, whose card is lower.
    void showCardsOfUnequalHeight(int count) {
        for (int i = 0; i < count; i += 3)
            stage.engine.analyzes(path(i), [](const std::stop_token&) -> MediaInfo {
                throw ConvertError("This file could not be opened.");
            });
        show(count);
        ASSERT_TRUE(QTest::qWaitFor(
            [&] { return stage.queue().pendingCount() == count - 1 - (count - 1) / 3; }, 20000));
    }

    void show(int count) {
        std::vector<std::filesystem::path> paths;
        for (int i = 0; i < count; ++i)
            paths.push_back(path(i));
        stage.queue().addPaths(paths);
        host = std::make_unique<WindowHost>(
            QStringLiteral("JobList"),
            QVariantMap{{QStringLiteral("queue"), QVariant::fromValue(&stage.queue())}},
            QSize(780, 400));
    }

    QQuickItem* row(int index) {
        QQuickItem* item = nullptr;
        QMetaObject::invokeMethod(&host->root(), "itemAtIndex", Q_RETURN_ARG(QQuickItem*, item),
                                  Q_ARG(int, index));
        return item;
    }

    QQuickItem* part(QQuickItem* of, const char* name) {
        return of->findChild<QQuickItem*>(QLatin1String(name));
    }

    /// How many rows that are made show another job's name than their own.
    int wrongRows() {
        int wrong = 0;
        for (int i = 0; i < stage.queue().jobList()->count(); ++i) {
            if (QQuickItem* item = row(i)) {
                const Job& job = *stage.queue().jobs().at(static_cast<std::size_t>(i));
                wrong += part(item, "fileName")->property("text").toString() != job.fileName();
            }
        }
        return wrong;
    }

    int madeRows() {
        int made = 0;
        for (int i = 0; i < stage.queue().jobList()->count(); ++i)
            made += row(i) ? 1 : 0;
        return made;
    }

    double y() const { return host->root().property("contentY").toDouble(); }

    void scrollTo(double y) {
        host->root().setProperty("contentY", y);
        rest();
    }

    /// Cards find their heights in the frames after they were made; from then on the list keeps its
    /// place when they change. A pause alone does not tell: on a busy machine frames come late.
    void rest() {
        FrameCounter frames(host->window());
        ASSERT_TRUE(QTest::qWaitFor([&] {
            return frames.during(std::chrono::milliseconds(100)) == 0 && allRowsArePlaced();
        }));
    }

    bool allRowsArePlaced() {
        for (int i = 0; i < stage.queue().jobList()->count(); ++i) {
            const QQuickItem* item = row(i);
            if (item && !item->property("placed").toBool())
                return false;
        }
        return true;
    }

    /// Where a card is in the window.
    double top(int index) { return row(index)->mapToScene(QPointF()).y(); }

    int indexAt(double sceneY) {
        int index = -1;
        QMetaObject::invokeMethod(&host->root(), "indexAt", Q_RETURN_ARG(int, index),
                                  Q_ARG(double, 100), Q_ARG(double, y() + sceneY));
        return index;
    }

    QQuickItem* bar() const {
        return host->root().findChild<QQuickItem*>(QStringLiteral("scrollBar"));
    }
    double position() const { return bar()->property("position").toDouble(); }
    double size() const { return bar()->property("size").toDouble(); }

    Job* job(int index) { return stage.queue().jobs().at(static_cast<std::size_t>(index)).get(); }

    Stage stage;
    std::unique_ptr<WindowHost> host;
};

TEST_F(JobListView, ShowsOneCardForEachJobInTheirOrder) {
    show(3);
    EXPECT_EQ(wrongRows(), 0);
    ASSERT_NE(row(2), nullptr);
    EXPECT_LT(row(0)->y(), row(1)->y());
    EXPECT_LT(row(1)->y(), row(2)->y());
}

TEST_F(JobListView, HasSixteenPixelsAroundAndEightBetweenTheCards) {
    show(3);
    QQuickItem* card = part(row(0), "fileName")->parentItem()->parentItem();
    EXPECT_EQ(card->mapRectToScene(card->boundingRect()).topLeft(), QPointF(16, 16));
    EXPECT_EQ(card->width(), 780 - 32);
    EXPECT_EQ(row(1)->y() - row(0)->y() - row(0)->height(), 8);
}

TEST_F(JobListView, MakesCardsAsFarAsTheyAreSeen) {
    show(2000);
    EXPECT_GT(madeRows(), 4);
    EXPECT_LT(madeRows(), 60);
}

TEST_F(JobListView, ShowsItsScrollBar) {
    show(50);
    EXPECT_TRUE(QTest::qWaitFor([&] { return madeRows() > 0; }));
    const auto* bar = host->root().findChild<QQuickItem*>(QStringLiteral("scrollBar"));
    ASSERT_NE(bar, nullptr);
    EXPECT_TRUE(bar->isVisible());
}

TEST_F(JobListView, ScrollsToTheCardThatTheKeyboardReaches) {
    show(30);
    const double before = host->root().property("contentY").toDouble();
    for (int i = 0; i < 60; ++i)
        host->key(Qt::Key_Tab);
    QTest::qWait(30);
    EXPECT_GT(host->root().property("contentY").toDouble(), before + 100);
    const QQuickItem* focus = host->window().activeFocusItem();
    EXPECT_LT(focus->mapToScene(QPointF()).y(), 400);
}

TEST_F(JobListView, StaysWhereItIsWhileCardsAboveItGrowAndShrink) {
    showCardsOfUnequalHeight(60);
    scrollTo(1500);
    const int seen = indexAt(200);
    int above = indexAt(0) - 2;
    above -= above % 3 == 0 ? 1 : 0;
    const double before = top(seen);
    EXPECT_NEAR(y(), 1500, 1) << "where it was scrolled to";
    const double height = row(above)->height();
    ASSERT_LT(top(above) + height, 0);
    stage.convert(job(above));
    ASSERT_TRUE(QTest::qWaitFor([&] { return row(above)->height() > height; }));
    rest();
    const double converting = row(above)->height();
    EXPECT_NEAR(top(seen), before, 1) << "a card above it converts";
    stage.finish(Mode::boxlift);
    ASSERT_TRUE(QTest::qWaitFor([&] { return row(above)->height() < converting; }));
    rest();
    EXPECT_NEAR(top(seen), before, 1) << "and is done";
}

TEST_F(JobListView, ShowsAfterAJumpWhatItShowsLater) {
    showCardsOfUnequalHeight(60);
    FrameCounter frames(host->window());
    host->root().setProperty("contentY", 1500);
    ASSERT_TRUE(QTest::qWaitFor([&] { return frames.during(std::chrono::milliseconds(1)) > 0; }));
    const int seen = indexAt(200);
    const double before = top(seen);
    rest();
    EXPECT_NEAR(top(seen), before, 1);
}

TEST_F(JobListView, StaysWhereItIsWhileCardsBelowItGrow) {
    showCardsOfUnequalHeight(60);
    scrollTo(1500);
    const int seen = indexAt(200);
    int below = indexAt(399) + 2;
    below += below % 3 == 0 ? 1 : 0;
    const double before = top(seen);
    stage.convert(job(below));
    rest();
    EXPECT_NEAR(top(seen), before, 1);
}

TEST_F(JobListView, HasAScrollBarThatKnowsItsEnds) {
    showCardsOfUnequalHeight(10000);
    EXPECT_NEAR(position(), 0, 0.0005);
    QMetaObject::invokeMethod(&host->root(), "positionViewAtEnd");
    QTest::qWait(50);
    EXPECT_NEAR(position() + size(), 1, 0.0005);
    EXPECT_NE(row(9999), nullptr);
    QMetaObject::invokeMethod(&host->root(), "positionViewAtBeginning");
    QTest::qWait(50);
    EXPECT_NEAR(position(), 0, 0.0005);
    EXPECT_NE(row(0), nullptr);
}

/// Heights that are not known yet are guesses, which change with every card that is made.
TEST_F(JobListView, HasAScrollBarThatDoesNotJump) {
    showCardsOfUnequalHeight(10000);
    scrollTo(20000);
    double last = position();
    for (int step = 0; step < 60; ++step) {
        host->root().setProperty("contentY", y() + 250);
        QTest::qWait(5);
        EXPECT_GE(position(), last - 0.002) << "step " << step;
        EXPECT_LE(position(), last + 0.004) << "step " << step;
        last = position();
    }
}

/// Rows that are removed while they are shown or wait for their next job must neither warn nor
/// show another job's card.
TEST_F(JobListView, SurvivesRemovalsWhileItScrolls) {
    show(300);
    for (int round = 0; round < 25; ++round) {
        host->root().setProperty("contentY", 200.0 * round);
        QTest::qWait(8);
        int index = -1;
        QMetaObject::invokeMethod(&host->root(), "indexAt", Q_RETURN_ARG(int, index),
                                  Q_ARG(double, 100), Q_ARG(double, 200.0 * round + 150));
        const auto& jobs = stage.queue().jobs();
        if (index >= 0)
            stage.queue().remove(jobs.at(static_cast<std::size_t>(index)).get());
        stage.queue().remove(jobs.front().get());
        stage.queue().remove(jobs.back().get());
        QTest::qWait(round % 5 == 0 ? 150 : 8);
    }
    QTest::qWait(200);
    EXPECT_GT(madeRows(), 4);
    EXPECT_EQ(wrongRows(), 0);
}

} // namespace
} // namespace boxlift::test
