#pragma once

#include <functional>

#include <QPalette>

#include "queue/file_chooser.h"

class QFileDialog;

namespace boxlift {

/// Asks with panels of this program's own, on top of the window that has the focus. Main thread.
class DialogChooser : public FileChooser {
public:
    /// `palette` tells the colours for a panel that is about to open.
    explicit DialogChooser(std::function<QPalette()> palette);

    QList<QUrl> chooseFiles(const QString& message) override;
    std::optional<QUrl> chooseFolder(const QString& prompt, const QUrl& start) override;

private:
    bool confirmed(QFileDialog& panel) const;

    std::function<QPalette()> m_palette;
    /// Where the user last chose files.
    QUrl m_folder;
};

} // namespace boxlift
