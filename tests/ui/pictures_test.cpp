#include <gtest/gtest.h>

#include <QDir>
#include <QGuiApplication>
#include <QPalette>
#include <QTest>

#include "ui/support/font_size.h"
#include "ui/support/pixels.h"
#include "ui/support/stage.h"
#include "ui/support/window_host.h"

namespace boxlift::test {
namespace {

/// Pictures of the window in both appearances, for people to look at. They are kept where
/// BOXLIFT_PICTURES says.
class Pictures : public testing::TestWithParam<bool> {
protected:
    void SetUp() override {
        QGuiApplication::setPalette(
            QPalette(GetParam() ? QColor(30, 30, 30) : QColor(240, 240, 240)));
    }

    void show(QSize size) {
        host = std::make_unique<WindowHost>(
            QStringLiteral("ContentView"),
            QVariantMap{{QStringLiteral("queue"), QVariant::fromValue(&stage.queue())}}, size);
        host->window().setColor(GetParam() ? QColor(0x1e1f22) : QColor(0xf3f3f5));
    }

    QImage keep(const QString& name) {
        QTest::qWait(150);
        const QImage picture = host->picture();
        const QString folder = qEnvironmentVariable("BOXLIFT_PICTURES");
        if (!folder.isEmpty()) {
            const QString scale = QString::number(host->window().effectiveDevicePixelRatio());
            picture.save(QDir(folder).filePath(
                QStringLiteral("%1-%2-%3x.png")
                    .arg(name, GetParam() ? QStringLiteral("dark") : QStringLiteral("light"),
                         scale)));
        }
        return picture;
    }

    void fill() {
        stage.addReading("Interview raw take 3.mkv");
        stage.addReady("Holiday in Åland 2024.mov");
        stage.addReady("drone-footage-kvarken-archipelago-long-name-2160p-final-v2.mov")
            ->setSize(SizeOption::p720);
        stage.addReady("Podcast episode 12.mp3", song())->setTarget(Target::mp4);
        stage.addDone("screen capture.mp4", Mode::boxlift);
        stage.addDone("voice memo.wav", Mode::reencode, song());
        stage.addFailed("old-clip.wmv",
                        "This file could not be opened. It may be damaged, or it may use a kind of "
                        "container that this system cannot read; a long message wraps onto further "
                        "lines inside the card instead of being cut.");
        Job* running = stage.addReady("Concert.mov");
        running->setSize(SizeOption::p1080);
        stage.convert(running);
        stage.report(0.42);
        ASSERT_TRUE(QTest::qWaitFor([&] { return running->progress() > 0.4; }));
        // Only now: a run makes its folder.
        stage.queue().setOutputDir(QDir::homePath().toStdString() + "/Videos");
    }

    Stage stage;
    std::unique_ptr<WindowHost> host;
};

TEST_P(Pictures, OfTheEmptyWindow) {
    show({780, 520});
    const QImage picture = keep(QStringLiteral("empty"));
    const QColor ground(GetParam() ? 0x1e1f22 : 0xf3f3f5);
    EXPECT_EQ(picture.pixelColor(20, 20), ground);
    EXPECT_LT(count(picture, picture.rect(), ground), picture.width() * picture.height() * 9 / 10);
}

TEST_P(Pictures, OfAList) {
    show({1280, 900});
    fill();
    const QImage picture = keep(QStringLiteral("list"));
    const QColor card(GetParam() ? 0x2b2c31 : 0xffffff);
    EXPECT_GT(count(picture, picture.rect(), card), picture.width() * picture.height() / 3);
}

TEST_P(Pictures, OfTheSmallestWindow) {
    show({780, 520});
    fill();
    host->click(host->shown(QStringLiteral("size")));
    keep(QStringLiteral("small"));
    EXPECT_LE(host->shown(QStringLiteral("run"))->mapToScene(QPointF(96, 0)).x(), 780 - 16);
}

TEST_P(Pictures, OfLargerText) {
    const FontSize large(24);
    show({780 * 8 / 5, 520 * 8 / 5});
    fill();
    const QImage picture = keep(QStringLiteral("larger"));
    EXPECT_EQ(host->shown(QStringLiteral("defaultTarget"))->width(), 190 * 8 / 5);
    EXPECT_GT(picture.width(), 1200);
}

INSTANTIATE_TEST_SUITE_P(LightAndDark, Pictures, testing::Bool());

} // namespace
} // namespace boxlift::test
