#include "ui/files_panel.h"

#include <algorithm>

#include <QAbstractItemView>
#include <QDialogButtonBox>
#include <QFileSystemModel>
#include <QHeaderView>
#include <QLabel>
#include <QLayout>
#include <QPushButton>
#include <QSplitter>
#include <QStandardPaths>
#include <QTreeView>

#include "ui/panel_parts.h"

namespace boxlift {

namespace {

constexpr const char* viewNames[] = {"listView", "treeView"};
constexpr QStandardPaths::StandardLocation places[] = {
    QStandardPaths::HomeLocation, QStandardPaths::DesktopLocation, QStandardPaths::MoviesLocation,
    QStandardPaths::MusicLocation, QStandardPaths::DownloadLocation};

QList<QUrl> sidebar() {
    QList<QUrl> urls;
    for (const QStandardPaths::StandardLocation place : places) {
        const QUrl url = QUrl::fromLocalFile(QStandardPaths::writableLocation(place));
        if (!urls.contains(url))
            urls.append(url);
    }
    return urls;
}

} // namespace

FilesPanel::FilesPanel(const QString& message, QWidget* parent)
    : QFileDialog(parent), m_view(nullptr), m_model(nullptr) {
    setOptions(DontUseNativeDialog | DontResolveSymlinks);
    setFileMode(ExistingFiles);
    setSidebarUrls(sidebar());
    m_view = findChild<QAbstractItemView*>(QLatin1String(viewNames[0]));
    m_model = findChild<QFileSystemModel*>(QStringLiteral("qt_filesystem_model"));
    showMessage(message);
    hideParts(*this, {"fileTypeLabel", "fileTypeCombo", "newFolderButton"});
    arrangeColumns();
    letFoldersBeSelected();
}

void FilesPanel::showMessage(const QString& message) {
    setWindowTitle(message);
    auto* label = new QLabel(message, this);
    label->setObjectName(QStringLiteral("message"));
    label->setTextFormat(Qt::PlainText);
    label->setAlignment(Qt::AlignCenter);
    label->setContentsMargins(12, 12, 12, 2);
    // The one place above a layout that is already full.
    layout()->setMenuBar(label);
}

/// Room for the names first of all.
void FilesPanel::arrangeColumns() {
    if (auto* splitter = findChild<QSplitter*>(QStringLiteral("splitter")))
        splitter->setSizes({140, 560});
    if (auto* table = findChild<QTreeView*>(QLatin1String(viewNames[1]))) {
        table->header()->setStretchLastSection(false);
        table->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
        table->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    }
}

void FilesPanel::letFoldersBeSelected() {
    for (const char* name : viewNames) {
        if (auto* view = findChild<QAbstractItemView*>(QLatin1String(name)))
            view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    }
    // Queued: the dialog itself refuses folders at each change, and has to have done so before.
    if (m_view)
        connect(m_view->selectionModel(), &QItemSelectionModel::selectionChanged, this,
                &FilesPanel::offerSelection, Qt::QueuedConnection);
}

void FilesPanel::offerSelection() {
    auto* buttons = findChild<QDialogButtonBox*>(QStringLiteral("buttonBox"));
    if (buttons && !selection().isEmpty())
        buttons->button(QDialogButtonBox::Open)->setEnabled(true);
}

QList<QUrl> FilesPanel::selection() const {
    QList<QUrl> urls;
    if (!m_view || !m_model)
        return urls;
    QModelIndexList rows = m_view->selectionModel()->selectedRows();
    std::sort(rows.begin(), rows.end(),
              [](const QModelIndex& a, const QModelIndex& b) { return a.row() < b.row(); });
    for (const QModelIndex& row : rows)
        urls.append(QUrl::fromLocalFile(m_model->filePath(row)));
    return urls;
}

void FilesPanel::accept() {
    m_chosen = selection();
    // With nothing selected there is a name that was typed, which the dialog looks up by itself.
    if (m_chosen.isEmpty())
        QFileDialog::accept();
    else
        done(Accepted);
}

QList<QUrl> FilesPanel::chosen() const {
    return m_chosen.isEmpty() ? selectedUrls() : m_chosen;
}

} // namespace boxlift
