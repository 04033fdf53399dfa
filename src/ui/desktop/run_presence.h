#pragma once

#include <functional>

#include <QDBusConnection>
#include <QMetaObject>
#include <QObject>

#include "ui/desktop/launcher_progress.h"
#include "ui/desktop/notifier.h"
#include "ui/desktop/sleep_inhibitor.h"

namespace boxlift {

class Queue;
struct RunCounts;

/// What the desktop sees of a run: the machine stays awake, the launcher shows how far it is, and
/// its end is told when nobody is looking. Main thread; ends before the queue.
class RunPresence : public QObject {
    Q_OBJECT

public:
    /// `isInFront` tells whether the user has the window before them.
    RunPresence(const Queue& queue, const QDBusConnection& bus, std::function<bool()> isInFront,
                QObject* parent = nullptr);

    /// How many files are done and how many failed, as a sentence; empty when there are none.
    static QString sentence(const RunCounts& counts);

signals:
    /// The user wants to see the window.
    void windowWanted();

private:
    void followRun();
    void followJob();
    void showProgress();

    const Queue& m_queue;
    const std::function<bool()> m_isInFront;
    SleepInhibitor m_sleep;
    LauncherProgress m_launcher;
    Notifier m_notifier;
    QMetaObject::Connection m_job;
};

} // namespace boxlift
