#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

#include <QObject>

#include "queue/queue.h"
#include "queue/user_preferences.h"
#include "ui/desktop/run_presence.h"
#include "ui/dialog_chooser.h"

class QQmlApplicationEngine;
class QQuickWindow;

namespace boxlift {

/// The application: the one queue, and the window on it. Lives inside QApplication; main thread.
/// Its end closes the window, stops whatever runs and waits for it.
class Shell : public QObject {
    Q_OBJECT

public:
    explicit Shell(Engine engine);
    ~Shell() override;

    Queue& queue() { return m_queue; }

    /// Opens the window in front of the others; null when that fails.
    QQuickWindow* openWindow();
    /// Brings it back to the front.
    void raiseWindow();

    /// Takes the files that the desktop hands over while the application runs.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void finishStart();
    QQuickWindow* window() const;
    QPalette palette() const;

    std::unique_ptr<QQmlApplicationEngine> m_qml;
    std::function<void()> m_prepareEngine;
    UserPreferences m_preferences;
    DialogChooser m_chooser;
    Queue m_queue;
    RunPresence m_presence;
    std::unique_ptr<QObject> m_systemMenuBar;
};

} // namespace boxlift
