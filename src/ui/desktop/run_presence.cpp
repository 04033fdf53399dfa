#include "ui/desktop/run_presence.h"

#include <algorithm>
#include <utility>

#include "queue/queue.h"

namespace boxlift {

namespace {

QString files(int count) {
    return count == 1 ? QStringLiteral("1 file is") : QStringLiteral("%1 files are").arg(count);
}

double fraction(const RunCounts& counts, const Job* current) {
    const int ended = counts.done + counts.failed;
    const double running = current ? current->progress() : 0;
    return std::min(1.0, (ended + running) / std::max(1, counts.planned));
}

} // namespace

RunPresence::RunPresence(const Queue& queue, const QDBusConnection& bus,
                         std::function<bool()> isInFront, QObject* parent)
    : QObject(parent), m_queue(queue), m_isInFront(std::move(isInFront)), m_sleep(bus),
      m_launcher(bus), m_notifier(bus) {
    connect(&queue, &Queue::isRunningChanged, this, &RunPresence::followRun);
    connect(&queue, &Queue::runAdvanced, this, &RunPresence::followJob);
    connect(&m_notifier, &Notifier::activated, this, &RunPresence::windowWanted);
}

QString RunPresence::sentence(const RunCounts& counts) {
    if (counts.done == 0 && counts.failed == 0)
        return {};
    if (counts.failed == 0)
        return QStringLiteral("%1 done.").arg(files(counts.done));
    if (counts.done == 0)
        return counts.failed == 1 ? QStringLiteral("1 file failed.")
                                  : QStringLiteral("%1 files failed.").arg(counts.failed);
    return QStringLiteral("%1 done, %2 failed.").arg(files(counts.done)).arg(counts.failed);
}

void RunPresence::followRun() {
    if (m_queue.isRunning()) {
        m_sleep.hold(QStringLiteral("Converting files"));
        return;
    }
    disconnect(m_job);
    m_sleep.release();
    m_launcher.clear();
    const QString ended = sentence(m_queue.runCounts());
    if (!ended.isEmpty() && !m_isInFront())
        m_notifier.tell(QStringLiteral("Conversion finished"), ended);
}

void RunPresence::followJob() {
    disconnect(m_job);
    m_job = connect(m_queue.current(), &Job::progressChanged, this, &RunPresence::showProgress);
    showProgress();
}

void RunPresence::showProgress() {
    m_launcher.show(fraction(m_queue.runCounts(), m_queue.current()));
}

} // namespace boxlift
