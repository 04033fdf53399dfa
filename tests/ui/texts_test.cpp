#include "ui/texts.h"

#include <clocale>
#include <limits>

#include <gtest/gtest.h>

#include <QLocale>

namespace boxlift::test {
namespace {

TEST(PercentText, CutsInsteadOfRounding) {
    EXPECT_EQ(percentText(0).toStdString(), "0%");
    EXPECT_EQ(percentText(0.004).toStdString(), "0%");
    EXPECT_EQ(percentText(0.42).toStdString(), "42%");
    EXPECT_EQ(percentText(0.999).toStdString(), "99%");
    EXPECT_EQ(percentText(1).toStdString(), "100%");
}

TEST(PercentText, EndsTheProgramWhereTheProgressIsNoNumber) {
    EXPECT_DEATH(percentText(std::numeric_limits<double>::quiet_NaN()), "cannot be shown");
    EXPECT_DEATH(percentText(std::numeric_limits<double>::infinity()), "cannot be shown");
    EXPECT_DEATH(percentText(1e300), "cannot be shown");
}

TEST(DoneText, PromisesQualityForACopyAlone) {
    EXPECT_EQ(doneText(Mode::boxlift, 3.04).toStdString(), "Boxlifted in 3.0s, no quality loss");
    EXPECT_EQ(doneText(Mode::reencode, 12).toStdString(), "Re-encoded in 12.0s");
}

TEST(DoneText, RoundsHalvesToTheEvenDigitAsPrintfDoes) {
    EXPECT_EQ(doneText(Mode::reencode, 0.25).toStdString(), "Re-encoded in 0.2s");
    EXPECT_EQ(doneText(Mode::reencode, 0.75).toStdString(), "Re-encoded in 0.8s");
    EXPECT_EQ(doneText(Mode::reencode, 59.96).toStdString(), "Re-encoded in 60.0s");
}

TEST(DoneText, HasADecimalPointInEveryLocale) {
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German));
    EXPECT_EQ(QLocale().decimalPoint().toStdString(), ",");
    EXPECT_EQ(doneText(Mode::reencode, 1234.5).toStdString(), "Re-encoded in 1234.5s");
    QLocale::setDefault(before);
}

TEST(BadgeText, IsTheModesWordInCapitals) {
    EXPECT_EQ(badgeText(Mode::boxlift).toStdString(), "BOXLIFT");
    EXPECT_EQ(badgeText(Mode::reencode).toStdString(), "RE-ENCODE");
}

std::string folderTextOf(const QString& path) {
    return folderText(QUrl::fromLocalFile(path), QStringLiteral("/home/eva")).toStdString();
}

TEST(FolderText, HasATildeForHome) {
    EXPECT_EQ(folderTextOf(QStringLiteral("/home/eva")), "~");
    EXPECT_EQ(folderTextOf(QStringLiteral("/home/eva/Videos")), "~/Videos");
    EXPECT_EQ(folderTextOf(QStringLiteral("/media/disk")), "/media/disk");
}

TEST(FolderText, ReplacesEveryOccurrenceOfHome) {
    EXPECT_EQ(folderTextOf(QStringLiteral("/backup/home/eva/copy/home/eva/Videos")),
              "/backup~/copy~/Videos");
}

TEST(FolderText, IsAPlainPath) {
    EXPECT_EQ(folderTextOf(QStringLiteral("/media/100% Å b#c/")), "/media/100% Å b#c");
    EXPECT_EQ(folderTextOf(QStringLiteral("/")), "/");
}

TEST(FolderText, IsLeftAloneWhereThereIsNoHome) {
    EXPECT_EQ(folderText(QUrl::fromLocalFile(QStringLiteral("/media")), QString()).toStdString(),
              "/media");
}

} // namespace
} // namespace boxlift::test
