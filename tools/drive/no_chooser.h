#pragma once

#include "queue/file_chooser.h"

namespace boxlift::drive {

/// Stands where a window would ask: nobody is there to choose anything. Main thread.
class NoChooser : public FileChooser {
public:
    QList<QUrl> chooseFiles(const QString&) override { return {}; }
    std::optional<QUrl> chooseFolder(const QString&, const QUrl&) override { return std::nullopt; }
};

} // namespace boxlift::drive
