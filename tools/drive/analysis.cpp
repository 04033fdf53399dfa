#include "drive/analysis.h"

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

#include "drive/events.h"
#include "drive/failure_message.h"
#include "model/job_rules.h"

namespace boxlift::drive {

namespace {

void analyzeJob(Job& job, const Engine& engine, EventWriter& events, const std::stop_token& stop) {
    try {
        job.info = engine.analyze(job.url, stop);
    } catch (...) {
        if (stop.stop_requested())
            return;
        job.state = Job::State::failed;
        events.write(failedEvent(job.url, failureMessage()));
        return;
    }
    job.target = targetFor(*job.info, job.target);
    job.state = Job::State::ready;
    events.write(readyEvent(job));
}

} // namespace

void analyzeJobs(std::span<Job> jobs, const Engine& engine, unsigned threadCount,
                 EventWriter& events, const std::stop_token& stop) {
    std::atomic<std::size_t> next = 0;
    const auto work = [&] {
        while (!stop.stop_requested()) {
            const std::size_t index = next++;
            if (index >= jobs.size())
                return;
            analyzeJob(jobs[index], engine, events, stop);
        }
    };
    std::vector<std::jthread> threads;
    for (std::size_t i = 0; i < std::min<std::size_t>(threadCount, jobs.size()); ++i)
        threads.emplace_back(work);
}

} // namespace boxlift::drive
