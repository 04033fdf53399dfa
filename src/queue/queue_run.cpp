#include "queue/queue.h"

#include <utility>

#include "model/job_rules.h"

namespace boxlift {

void Queue::startAll() {
    if (!m_isRunning)
        runAll(beginRun());
}

void Queue::convert(Job* job) {
    if (job && !m_isRunning && job->canConvert())
        runOne(job->shared_from_this(), beginRun());
}

std::stop_token Queue::beginRun() {
    m_isRunning = true;
    m_runCounts = {};
    if (m_task)
        m_task.release()->deleteLater();
    m_task = std::make_unique<Task>();
    emit taskChanged();
    emit isRunningChanged();
    return m_task->stopToken();
}

void Queue::beginJob(std::shared_ptr<Job> job) {
    m_current = std::move(job);
    emit runAdvanced();
}

void Queue::countJob(const Job& job) {
    m_runCounts.done += std::holds_alternative<Done>(job.state()) ? 1 : 0;
    m_runCounts.failed += std::holds_alternative<Failed>(job.state()) ? 1 : 0;
}

void Queue::endRun() {
    m_current.reset();
    m_isRunning = false;
    emit isRunningChanged();
}

/// The snapshot holds the jobs themselves: one that leaves the list meanwhile is still converted.
QCoro::Task<> Queue::runAll(std::stop_token stop) {
    co_await m_workers.turns.nextTurn();
    const JobList::Jobs snapshot = jobs();
    m_runCounts.planned = pendingCount();
    for (const auto& job : snapshot) {
        if (!job->canConvert())
            continue;
        if (stop.stop_requested())
            break;
        beginJob(job);
        auto run = job->run(outputDir(), stop);
        co_await run;
        countJob(*job);
    }
    endRun();
}

QCoro::Task<> Queue::runOne(std::shared_ptr<Job> job, std::stop_token stop) {
    co_await m_workers.turns.nextTurn();
    m_runCounts.planned = 1;
    beginJob(job);
    auto run = job->run(outputDir(), stop);
    co_await run;
    countJob(*job);
    endRun();
}

/// Taking away the running job stops the rest of the run as well.
void Queue::remove(Job* job) {
    if (!job)
        return;
    if (m_current.get() == job && m_task)
        m_task->cancel();
    removeIf([id = job->id()](const Job& other) { return other.id() == id; });
}

void Queue::clearFinished() {
    removeIf([](const Job& job) { return std::holds_alternative<Done>(job.state()); });
}

void Queue::removeIf(const std::function<bool(const Job&)>& predicate) {
    for (const auto& job : m_jobs.removeIf(predicate))
        m_tally.forget(*job);
}

void Queue::applyDefaultsToAll() {
    for (const auto& job : jobs()) {
        if (std::holds_alternative<Converting>(job->state()))
            continue;
        job->setTarget(m_defaults.target);
        job->setSize(m_defaults.size);
        job->setRemoveAudio(m_defaults.removeAudio);
        if (!job->info())
            continue;
        if (const Target suitable = targetFor(*job->info(), job->target());
            suitable != job->target())
            job->setTarget(suitable);
    }
}

} // namespace boxlift
