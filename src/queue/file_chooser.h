#pragma once

#include <optional>

#include <QList>
#include <QString>
#include <QUrl>

namespace boxlift {

/// Asks the user for files and folders. Main thread; each call is modal: it returns when the user
/// has decided, and the event loop runs meanwhile.
class FileChooser {
public:
    virtual ~FileChooser() = default;

    /// Files and folders together, any number of them, in the panel's order; none when the user
    /// cancels. `message` says what they are wanted for.
    virtual QList<QUrl> chooseFiles(const QString& message) = 0;

    /// One folder, which can be made on the way; nothing when the user cancels. `prompt` is the
    /// title of the confirming button, `start` the folder that is shown first.
    virtual std::optional<QUrl> chooseFolder(const QString& prompt, const QUrl& start) = 0;
};

} // namespace boxlift
