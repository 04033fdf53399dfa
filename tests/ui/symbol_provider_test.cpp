#include "ui/symbol_provider.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QImage>

namespace boxlift::test {
namespace {

QImage drawn(const QString& id, int side) {
    QSize size;
    QImage image = SymbolProvider().requestImage(id, &size, QSize(side, side));
    EXPECT_EQ(size, image.isNull() ? QSize() : image.size());
    return image;
}

/// How many pixels are covered, in hundredths.
int coverage(const QImage& image) {
    int alpha = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            alpha += image.pixelColor(x, y).alpha();
    }
    return alpha * 100 / (255 * image.width() * image.height());
}

class SymbolNamed : public testing::TestWithParam<const char*> {};

TEST_P(SymbolNamed, IsDrawnInItsColourAtTheSizeAskedFor) {
    for (const int side : {14, 21, 28, 56}) {
        const QImage image =
            drawn(QStringLiteral("%1/ff0000").arg(QLatin1String(GetParam())), side);
        ASSERT_EQ(image.size(), QSize(side, side));
        EXPECT_GT(coverage(image), 4);
        EXPECT_LT(coverage(image), 70);
        for (int y = 0; y < side; ++y) {
            for (int x = 0; x < side; ++x) {
                const QColor pixel = image.pixelColor(x, y);
                EXPECT_TRUE(pixel.alpha() == 0 || (pixel.green() == 0 && pixel.blue() == 0));
            }
        }
    }
}

TEST_P(SymbolNamed, StaysInsideItsFrame) {
    const QImage image = drawn(QStringLiteral("%1/000000").arg(QLatin1String(GetParam())), 56);
    for (int i = 0; i < 56; ++i) {
        EXPECT_EQ(image.pixelColor(0, i).alpha(), 0);
        EXPECT_EQ(image.pixelColor(55, i).alpha(), 0);
        EXPECT_EQ(image.pixelColor(i, 0).alpha(), 0);
        EXPECT_EQ(image.pixelColor(i, 55).alpha(), 0);
    }
}

INSTANTIATE_TEST_SUITE_P(AllThatTheWindowShows, SymbolNamed,
                         testing::Values("arrow.down.doc.fill", "folder", "questionmark.circle",
                                         "film", "waveform", "exclamationmark.circle",
                                         "exclamationmark.triangle.fill", "magnifyingglass",
                                         "play.fill", "xmark", "checkmark", "chevron.updown"));

TEST(SymbolProvider, TakesAnOpacityInFrontOfTheColour) {
    const QColor opaque = drawn(QStringLiteral("play.fill/ff336699"), 56).pixelColor(28, 28);
    EXPECT_EQ(opaque.alpha(), 255);
    EXPECT_EQ(opaque.name().toStdString(), "#336699");
    EXPECT_NEAR(drawn(QStringLiteral("play.fill/80336699"), 56).pixelColor(28, 28).alpha(), 128, 1);
}

TEST(SymbolProvider, HasNothingForUnknownNamesAndColours) {
    EXPECT_TRUE(drawn(QStringLiteral("no.such.symbol/000000"), 14).isNull());
    EXPECT_TRUE(drawn(QStringLiteral("film/nonsense"), 14).isNull());
}

TEST(SymbolProvider, KnowsTheUsualSizeOfASymbol) {
    QSize size;
    SymbolProvider().requestImage(QStringLiteral("film/000000"), &size, QSize());
    EXPECT_EQ(size, QSize(28, 28));
}

} // namespace
} // namespace boxlift::test
