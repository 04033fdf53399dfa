#include "drive/job_reporter.h"

#include <utility>

namespace boxlift::drive {

JobReporter::JobReporter(EventWriter& events, std::stop_token stop)
    : m_events(events), m_stop(std::move(stop)) {}

void JobReporter::watch(const Job& job) {
    ++m_jobCount;
    connect(&job, &Job::stateChanged, this, [this, &job] { stateChanged(job); });
    connect(&job, &Job::progressChanged, this, [this, &job] { writeProgress(job); });
}

/// In `analyze` a job has ended well when it is ready, whatever stands in the way of converting it.
Counts JobReporter::counts(Command command) const {
    const int failed = m_analysisFailures + m_runFailures;
    if (command == Command::analyze)
        return {.done = m_readyCount, .failed = failed, .blocked = 0};
    return {.done = m_doneCount, .failed = failed, .blocked = m_blockedCount};
}

void JobReporter::stateChanged(const Job& job) {
    if (std::holds_alternative<Converting>(job.state())) {
        m_converting = &job;
        m_writtenProgress.reset();
    } else if (m_converting == &job) {
        m_converting = nullptr;
        runEnded(job);
    } else {
        analysisEnded(job);
    }
}

void JobReporter::analysisEnded(const Job& job) {
    if (std::holds_alternative<Ready>(job.state())) {
        ++m_readyCount;
        m_blockedCount += job.blocker() ? 1 : 0;
        m_events.write(readyEvent(job));
    } else if (!m_stop.stop_requested()) {
        ++m_analysisFailures;
        writeFailure(job);
    }
}

/// A job that has run and is ready again was cancelled.
void JobReporter::runEnded(const Job& job) {
    if (const Done* done = std::get_if<Done>(&job.state())) {
        ++m_doneCount;
        m_events.write(doneEvent(job.path(), done->output, done->mode, done->seconds));
    } else if (std::holds_alternative<Failed>(job.state())) {
        ++m_runFailures;
        writeFailure(job);
    } else {
        m_events.write(cancelledEvent(job.path()));
    }
}

void JobReporter::writeFailure(const Job& job) {
    m_events.write(failedEvent(job.path(), std::get<Failed>(job.state()).message));
}

/// A job sets its progress back when a run begins, too, but has nothing to set back in its first.
void JobReporter::writeProgress(const Job& job) {
    const double progress = job.progress();
    if (m_converting == &job && std::exchange(m_writtenProgress, progress) != progress)
        m_events.write(progressEvent(job.path(), progress));
}

} // namespace boxlift::drive
