#include "ui/job_keeper.h"

#include <utility>

namespace boxlift {

void JobKeeper::setJob(Job* job) {
    if (job == m_job.get())
        return;
    // The last one may go only when everybody has heard of the change.
    const std::shared_ptr<Job> last = std::exchange(m_job, job ? job->shared_from_this() : nullptr);
    emit jobChanged();
}

} // namespace boxlift
