#include "ui/files_panel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDialogButtonBox>
#include <QFileSystemModel>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QTest>
#include <QToolButton>
#include <QTreeView>

#include "support/temp_folder.h"

namespace boxlift::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// The panel, open in a folder that holds "album/inner.mp3", "b.mov" and "c d.mp4".
class FilesPanelTest : public testing::Test {
protected:
    void SetUp() override {
        writeFile(folder.path() / "album" / "inner.mp3");
        writeFile(folder.path() / "b.mov");
        writeFile(folder.path() / "c d.mp4");
        panel.setDirectory(QString::fromStdString(folder.path().string()));
        panel.show();
        view = panel.findChild<QListView*>(QStringLiteral("listView"));
        ASSERT_TRUE(
            QTest::qWaitFor([&] { return view->model()->rowCount(view->rootIndex()) == 3; }));
    }

    QModelIndex row(const QString& name) const {
        for (int i = 0; i < 3; ++i) {
            const QModelIndex index = view->model()->index(i, 0, view->rootIndex());
            if (index.data().toString() == name)
                return index;
        }
        return {};
    }

    void select(const QString& name) {
        view->selectionModel()->select(row(name),
                                       QItemSelectionModel::Select | QItemSelectionModel::Rows);
        QTest::qWait(20);
    }

    QPushButton* openButton() const {
        return panel.findChild<QDialogButtonBox*>(QStringLiteral("buttonBox"))
            ->button(QDialogButtonBox::Open);
    }

    QUrl url(const char* name) const {
        return QUrl::fromLocalFile(QString::fromStdString((folder.path() / name).string()));
    }

    TempFolder folder;
    FilesPanel panel{QStringLiteral("Choose something")};
    QListView* view = nullptr;
};

TEST(FilesPanelParts, HaveTheNamesThatQtGivesThem) {
    const FilesPanel panel{QString()};
    EXPECT_NE(panel.findChild<QListView*>(QStringLiteral("listView")), nullptr);
    EXPECT_NE(panel.findChild<QTreeView*>(QStringLiteral("treeView")), nullptr);
    EXPECT_NE(panel.findChild<QFileSystemModel*>(QStringLiteral("qt_filesystem_model")), nullptr);
    EXPECT_NE(panel.findChild<QDialogButtonBox*>(QStringLiteral("buttonBox")), nullptr);
    EXPECT_NE(panel.findChild<QWidget*>(QStringLiteral("fileTypeLabel")), nullptr);
    EXPECT_NE(panel.findChild<QWidget*>(QStringLiteral("fileTypeCombo")), nullptr);
    EXPECT_NE(panel.findChild<QToolButton*>(QStringLiteral("newFolderButton")), nullptr);
}

TEST_F(FilesPanelTest, ShowsItsMessage) {
    auto* message = panel.findChild<QLabel*>(QStringLiteral("message"));
    ASSERT_NE(message, nullptr);
    EXPECT_EQ(message->text().toStdString(), "Choose something");
    EXPECT_TRUE(message->isVisible());
    EXPECT_GT(message->height(), 10);
    EXPECT_LT(message->mapTo(&panel, QPoint()).y(), view->mapTo(&panel, QPoint()).y());
}

TEST_F(FilesPanelTest, HidesWhatChoosingDoesNotNeed) {
    for (const char* name : {"fileTypeLabel", "fileTypeCombo", "newFolderButton"})
        EXPECT_FALSE(panel.findChild<QWidget*>(QLatin1String(name))->isVisible()) << name;
}

TEST_F(FilesPanelTest, TakesAFolder) {
    EXPECT_FALSE(openButton()->isEnabled());
    select(QStringLiteral("album"));
    EXPECT_TRUE(openButton()->isEnabled());
    openButton()->click();
    EXPECT_EQ(panel.QDialog::result(), QDialog::Accepted);
    EXPECT_FALSE(panel.isVisible());
    EXPECT_THAT(panel.chosen(), ElementsAre(url("album")));
}

TEST_F(FilesPanelTest, TakesFilesAndFoldersTogetherInTheOrderShown) {
    select(QStringLiteral("c d.mp4"));
    select(QStringLiteral("album"));
    select(QStringLiteral("b.mov"));
    openButton()->click();
    EXPECT_THAT(panel.chosen(), ElementsAre(url("album"), url("b.mov"), url("c d.mp4")));
}

TEST_F(FilesPanelTest, EntersAFolderOnADoubleClick) {
    view->scrollTo(row(QStringLiteral("album")));
    emit view->activated(row(QStringLiteral("album")));
    EXPECT_TRUE(panel.isVisible());
    EXPECT_EQ(panel.directoryUrl(), url("album"));
}

TEST_F(FilesPanelTest, TakesANameThatIsTyped) {
    auto* name = panel.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    ASSERT_NE(name, nullptr);
    name->setFocus();
    QTest::keyClicks(name, url("b.mov").toLocalFile());
    openButton()->click();
    EXPECT_EQ(panel.QDialog::result(), QDialog::Accepted);
    EXPECT_THAT(panel.chosen(), ElementsAre(url("b.mov")));
}

TEST_F(FilesPanelTest, ChoosesNothingWhenItIsCancelled) {
    select(QStringLiteral("b.mov"));
    panel.reject();
    EXPECT_EQ(panel.QDialog::result(), QDialog::Rejected);
}

} // namespace
} // namespace boxlift::test
