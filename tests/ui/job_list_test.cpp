#include <set>

#include <gtest/gtest.h>

#include <QTest>

#include "ui/support/stage.h"
#include "ui/support/window_host.h"

namespace boxlift::test {
namespace {

class JobListView : public testing::Test {
protected:
    void show(int count) {
        std::vector<std::filesystem::path> paths;
        for (int i = 0; i < count; ++i)
            paths.push_back(stage.path("file " + std::to_string(i) + ".mov"));
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
    for (int i = 0; i < 12; ++i)
        host->key(Qt::Key_Tab);
    QTest::qWait(30);
    EXPECT_GT(host->root().property("contentY").toDouble(), before + 100);
    const QQuickItem* focus = host->window().activeFocusItem();
    EXPECT_LT(focus->mapToScene(QPointF()).y(), 400);
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
