#include "queue/job_tally.h"

#include <utility>

namespace boxlift {

void JobTally::watch(const Job& job) {
    connect(&job, &Job::stateChanged, this, [this, &job] { update(job); });
    connect(&job, &Job::canConvertChanged, this, [this, &job] { update(job); });
    m_shares.insert(&job, {});
    update(job);
}

void JobTally::forget(const Job& job) {
    job.disconnect(this);
    const Share share = m_shares.take(&job);
    add({.pending = -share.pending, .done = -share.done});
}

JobTally::Share JobTally::shareOf(const Job& job) {
    return {.pending = job.canConvert() ? 1 : 0,
            .done = std::holds_alternative<Done>(job.state()) ? 1 : 0};
}

void JobTally::update(const Job& job) {
    const Share now = shareOf(job);
    const Share before = std::exchange(m_shares[&job], now);
    add({.pending = now.pending - before.pending, .done = now.done - before.done});
}

void JobTally::add(const Share& share) {
    const bool hadDone = m_doneCount > 0;
    m_pendingCount += share.pending;
    m_doneCount += share.done;
    if (share.pending != 0)
        emit pendingCountChanged();
    if (hadDone != (m_doneCount > 0))
        emit hasDoneChanged();
}

} // namespace boxlift
