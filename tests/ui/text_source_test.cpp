#include "ui/text_source.h"

#include <gtest/gtest.h>

#include <QDir>

namespace boxlift::test {
namespace {

std::string joined(const QStringList& list) {
    return list.join(QLatin1Char('|')).toStdString();
}

TEST(TextSource, ListsTheChoicesInTheirOrder) {
    const TextSource texts;
    EXPECT_EQ(joined(texts.targets()), "MP4 (H.264 + AAC)|MOV|M4A audio|AAC audio only (128k)");
    EXPECT_EQ(joined(texts.shortTargets()), "MP4|MOV|M4A|AAC 128k");
    EXPECT_EQ(joined(texts.sizes()), "Original size|1080p|720p");
}

TEST(TextSource, ShortensTheUsersHome) {
    const QString home = QDir::homePath();
    ASSERT_FALSE(home.isEmpty());
    EXPECT_EQ(
        TextSource().folder(QUrl::fromLocalFile(home + QStringLiteral("/Videos"))).toStdString(),
        "~/Videos");
}

TEST(TextSource, WritesAPercentage) {
    EXPECT_EQ(TextSource().percent(0.5).toStdString(), "50%");
}

} // namespace
} // namespace boxlift::test
