#pragma once

#include <QFileDialog>
#include <QList>
#include <QUrl>

class QAbstractItemView;
class QFileSystemModel;

namespace boxlift {

/// A panel in which files and folders are chosen together, any number of each: a double click
/// enters a folder, the confirming button takes what is selected. The system's own panels cannot
/// do that. Main thread.
class FilesPanel : public QFileDialog {
    Q_OBJECT

public:
    /// `message` stands above everything else.
    explicit FilesPanel(const QString& message, QWidget* parent = nullptr);

    /// What was chosen, in the order in which the panel shows it. After the user's confirmation.
    QList<QUrl> chosen() const;

    void accept() override;

private:
    void showMessage(const QString& message);
    void arrangeColumns();
    void letFoldersBeSelected();
    void offerSelection();
    QList<QUrl> selection() const;

    // Parts of the dialog, found by their names; none where Qt has renamed them: then the panel
    // falls back to files alone.
    QAbstractItemView* m_view;
    QFileSystemModel* m_model;
    QList<QUrl> m_chosen;
};

} // namespace boxlift
