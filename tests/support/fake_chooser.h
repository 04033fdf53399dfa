#pragma once

#include "queue/file_chooser.h"

namespace boxlift::test {

/// A user who answers at once what `files` and `folder` say. Main thread.
class FakeChooser : public FileChooser {
public:
    QList<QUrl> chooseFiles(const QString& message) override {
        messages.push_back(message);
        return files;
    }

    std::optional<QUrl> chooseFolder(const QString& prompt, const QUrl& start) override {
        prompts.push_back(prompt);
        starts.push_back(start);
        return folder;
    }

    /// None: the user cancels.
    QList<QUrl> files;
    std::optional<QUrl> folder;

    QList<QString> messages;
    QList<QString> prompts;
    QList<QUrl> starts;
};

} // namespace boxlift::test
