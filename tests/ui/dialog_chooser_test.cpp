#include "ui/dialog_chooser.h"

#include <functional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QToolButton>

#include "support/temp_folder.h"
#include "ui/files_panel.h"

namespace boxlift::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// What the user does with the panel as soon as it is open.
void whenOpen(const std::function<void(QFileDialog&)>& act) {
    QTimer::singleShot(0, qApp, [act] {
        auto* panel = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(panel, nullptr);
        act(*panel);
        if (panel->isVisible())
            panel->reject();
    });
}

QPushButton* confirmButton(const QFileDialog& panel) {
    return panel.findChild<QDialogButtonBox*>(QStringLiteral("buttonBox"))
        ->button(QDialogButtonBox::Open);
}

class DialogChooserTest : public testing::Test {
protected:
    QUrl url(const std::filesystem::path& path) const {
        return QUrl::fromLocalFile(QString::fromStdString(path.string()));
    }

    QPalette palette{Qt::darkGreen};
    TempFolder folder;
    DialogChooser chooser{[this] { return palette; }};
};

TEST_F(DialogChooserTest, AsksForFilesWithItsMessageAndColours) {
    QString message;
    QColor color;
    whenOpen([&](QFileDialog& panel) {
        message = panel.findChild<QLabel*>(QStringLiteral("message"))->text();
        color = panel.palette().color(QPalette::Button);
    });
    chooser.chooseFiles(QStringLiteral("Choose video or audio files to convert"));
    EXPECT_EQ(message.toStdString(), "Choose video or audio files to convert");
    EXPECT_EQ(color, QColor(Qt::darkGreen));
}

/// The keys that open a panel work while one is open.
TEST_F(DialogChooserTest, OpensNoPanelOnTopOfAnother) {
    QWidget* open = nullptr;
    const auto rejectAnother = [&open] {
        auto* panel = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        EXPECT_EQ(panel, open) << "another panel is on top";
        if (panel != open)
            panel->reject();
    };
    whenOpen([&](QFileDialog& panel) {
        open = &panel;
        QTimer::singleShot(0, &panel, rejectAnother);
        EXPECT_THAT(chooser.chooseFiles(QString()), IsEmpty());
        QTimer::singleShot(0, &panel, rejectAnother);
        EXPECT_EQ(chooser.chooseFolder(QString(), QUrl()), std::nullopt);
        QTest::qWait(20);
    });
    chooser.chooseFiles(QString());
    EXPECT_NE(open, nullptr);
}

TEST_F(DialogChooserTest, GivesTheFilesThatWereChosen) {
    writeFile(folder.path() / "a.mov");
    whenOpen([&](QFileDialog& panel) {
        auto* name = panel.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        name->setText(url(folder.path() / "a.mov").toLocalFile());
        confirmButton(panel)->click();
    });
    EXPECT_THAT(chooser.chooseFiles(QString()), ElementsAre(url(folder.path() / "a.mov")));
}

TEST_F(DialogChooserTest, StartsAtHomeAndLaterWhereFilesWereChosenLast) {
    writeFile(folder.path() / "a.mov");
    QUrl first;
    QUrl second;
    whenOpen([&](QFileDialog& panel) {
        first = panel.directoryUrl();
        panel.setDirectory(url(folder.path()).toLocalFile());
        panel.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))
            ->setText(QStringLiteral("a.mov"));
        confirmButton(panel)->click();
    });
    ASSERT_THAT(chooser.chooseFiles(QString()), ElementsAre(url(folder.path() / "a.mov")));
    whenOpen([&](QFileDialog& panel) { second = panel.directoryUrl(); });
    chooser.chooseFiles(QString());
    EXPECT_EQ(first, QUrl::fromLocalFile(QDir::homePath()));
    EXPECT_EQ(second, url(folder.path()));
}

TEST_F(DialogChooserTest, GivesNothingWhenTheUserCancels) {
    writeFile(folder.path() / "a.mov");
    whenOpen([&](QFileDialog& panel) {
        panel.setDirectory(url(folder.path()).toLocalFile());
        panel.selectFile(QStringLiteral("a.mov"));
        panel.reject();
    });
    EXPECT_THAT(chooser.chooseFiles(QString()), IsEmpty());
    whenOpen([](QFileDialog& panel) { panel.reject(); });
    EXPECT_EQ(chooser.chooseFolder(QStringLiteral("Choose"), url(folder.path())), std::nullopt);
}

TEST_F(DialogChooserTest, AsksForAFolderStartingAtTheGivenOne) {
    QString confirm;
    QUrl shown;
    bool newFolders = false;
    QFileDialog::FileMode mode = QFileDialog::AnyFile;
    whenOpen([&](QFileDialog& panel) {
        confirm = confirmButton(panel)->text();
        shown = panel.directoryUrl();
        mode = panel.fileMode();
        newFolders = panel.findChild<QToolButton*>(QStringLiteral("newFolderButton"))->isEnabled();
        confirmButton(panel)->click();
    });
    const auto chosen = chooser.chooseFolder(QStringLiteral("Choose"), url(folder.path()));
    EXPECT_EQ(confirm.toStdString(), "Choose");
    EXPECT_EQ(shown, url(folder.path()));
    EXPECT_EQ(mode, QFileDialog::Directory);
    EXPECT_TRUE(newFolders);
    EXPECT_EQ(chosen, url(folder.path()));
}

TEST_F(DialogChooserTest, GivesTheFolderThatWasChosen) {
    std::filesystem::create_directory(folder.path() / "inner");
    whenOpen([&](QFileDialog& panel) {
        panel.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))
            ->setText(QStringLiteral("inner"));
        confirmButton(panel)->click();
    });
    EXPECT_EQ(chooser.chooseFolder(QStringLiteral("Choose"), url(folder.path())),
              url(folder.path() / "inner"));
}

TEST_F(DialogChooserTest, StartsAtTheNearestFolderThatStillExists) {
    QUrl shown;
    whenOpen([&](QFileDialog& panel) { shown = panel.directoryUrl(); });
    chooser.chooseFolder(QStringLiteral("Choose"), url(folder.path() / "gone" / "deeper"));
    EXPECT_EQ(shown, url(folder.path()));
}

} // namespace
} // namespace boxlift::test
