#include "ui/dialog_chooser.h"

#include <utility>

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QPushButton>
#include <QWindow>

#include "ui/files_panel.h"
#include "ui/panel_parts.h"

namespace boxlift {

namespace {

/// The folder itself, or as much of its path as exists.
QString existingFolder(const QUrl& folder) {
    QString path = folder.toLocalFile();
    while (!path.isEmpty() && !QFileInfo(path).isDir()) {
        const QString parent = QFileInfo(path).path();
        path = parent == path ? QString() : parent;
    }
    return path.isEmpty() ? QDir::homePath() : path;
}

/// The window's own buttons have none either.
void removeButtonIcons(const QFileDialog& panel) {
    for (QPushButton* button : panel.findChildren<QPushButton*>())
        button->setIcon(QIcon());
}

/// The keys of the window's commands work in a panel too, and must not open another on top of it.
bool isPanelOpen() {
    return QApplication::activeModalWidget() != nullptr;
}

} // namespace

DialogChooser::DialogChooser(std::function<QPalette()> palette) : m_palette(std::move(palette)) {}

QList<QUrl> DialogChooser::chooseFiles(const QString& message) {
    if (isPanelOpen())
        return {};
    FilesPanel panel(message);
    panel.setDirectory(existingFolder(m_folder));
    if (!confirmed(panel))
        return {};
    m_folder = panel.directoryUrl();
    return panel.chosen();
}

std::optional<QUrl> DialogChooser::chooseFolder(const QString& prompt, const QUrl& start) {
    if (isPanelOpen())
        return std::nullopt;
    QFileDialog panel;
    panel.setOptions(QFileDialog::DontUseNativeDialog | QFileDialog::DontResolveSymlinks |
                     QFileDialog::ShowDirsOnly);
    panel.setFileMode(QFileDialog::Directory);
    panel.setLabelText(QFileDialog::Accept, prompt);
    panel.setWindowTitle(QStringLiteral("Output folder"));
    // There is but one kind of folder.
    hideParts(panel, {"fileTypeLabel", "fileTypeCombo"});
    panel.setDirectory(existingFolder(start));
    if (!confirmed(panel) || panel.selectedUrls().isEmpty())
        return std::nullopt;
    return panel.selectedUrls().constFirst();
}

bool DialogChooser::confirmed(QFileDialog& panel) const {
    panel.setPalette(m_palette());
    removeButtonIcons(panel);
    panel.setMinimumSize(720, 460);
    panel.winId(); // Makes the window that is to stay on top of the other.
    panel.windowHandle()->setTransientParent(QGuiApplication::focusWindow());
    return panel.exec() == QDialog::Accepted;
}

} // namespace boxlift
