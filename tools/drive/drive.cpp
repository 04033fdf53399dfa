#include "drive/drive.h"

#include <QCoreApplication>

#include "drive/events.h"
#include "drive/job_reporter.h"
#include "drive/memory_preferences.h"
#include "drive/no_chooser.h"
#include "queue/queue.h"

namespace boxlift::drive {

namespace {

template <typename Condition>
void waitUntil(Condition isTrue) {
    while (!isTrue())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

/// There is nothing to press while no run goes on.
void pressStop(const Queue& queue) {
    if (Task* task = queue.task())
        task->cancel();
}

void fill(Queue& queue, const CommandLine& line) {
    queue.setDefaultTarget(line.target);
    queue.setDefaultSize(line.size);
    queue.setDefaultRemoveAudio(line.removeAudio);
    queue.setOutputDir(line.outputDir);
    queue.addPaths(line.paths);
}

/// From the paths to the last job. The queue's end takes with it the analyses that a stop broke
/// off.
void runQueue(const CommandLine& line, const Engine& engine, JobReporter& reporter,
              const std::stop_token& stop) {
    NoChooser chooser;
    MemoryPreferences preferences;
    Queue queue({.engine = engine, .chooser = chooser, .preferences = preferences, .folders = {}});
    // Wakes up the waiting below, too.
    const std::stop_callback forward(stop, [&queue, mailbox = queue.mailbox()] {
        mailbox->post([&queue] { pressStop(queue); });
    });
    fill(queue, line);
    for (const auto& job : queue.jobs())
        reporter.watch(*job);
    waitUntil([&] { return reporter.hasAllAnalyses() || stop.stop_requested(); });
    if (line.command == Command::analyze || stop.stop_requested())
        return;
    queue.startAll();
    waitUntil([&] { return !queue.isRunning(); });
}

ExitStatus statusOf(const Counts& counts, int jobCount) {
    return counts.done == jobCount ? ExitStatus::allWell : ExitStatus::someFailed;
}

} // namespace

ExitStatus drive(const CommandLine& commandLine, const Engine& engine, const LineSink& sink,
                 const std::stop_token& stop) {
    std::stop_source stopSource;
    const std::stop_callback forward(stop, [&] { stopSource.request_stop(); });
    EventWriter events(sink, stopSource);
    JobReporter reporter(events, stopSource.get_token());
    runQueue(commandLine, engine, reporter, stopSource.get_token());
    const bool wasStopped = stop.stop_requested();
    const Counts counts = reporter.counts(commandLine.command);
    events.write(finishedEvent(counts));
    if (wasStopped)
        return ExitStatus::stopped;
    return events.isBroken() ? ExitStatus::someFailed : statusOf(counts, reporter.jobCount());
}

} // namespace boxlift::drive
