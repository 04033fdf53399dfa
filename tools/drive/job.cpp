#include "drive/job.h"

#include "model/job_rules.h"

namespace boxlift::drive {

std::optional<std::string> blocker(const Job& job) {
    return job.info ? boxlift::blocker(*job.info, job.target) : std::nullopt;
}

std::optional<Plan> plan(const Job& job) {
    if (!job.info || blocker(job))
        return std::nullopt;
    return Converter::plan(*job.info, job.target, job.size, job.removeAudio);
}

bool canConvert(const Job& job) {
    const bool isIdle = job.state == Job::State::ready || job.state == Job::State::failed;
    return job.info && !blocker(job) && isIdle;
}

} // namespace boxlift::drive
