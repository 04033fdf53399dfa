#include "drive/drive.h"

#include <algorithm>
#include <string>
#include <thread>
#include <unordered_set>
#include <vector>

#include "drive/analysis.h"
#include "drive/conversion.h"
#include "drive/events.h"
#include "queue/expand.h"

namespace boxlift::drive {

namespace {

/// One job per file, with the defaults of the command line.
std::vector<Job> makeJobs(const CommandLine& line) {
    std::vector<Job> jobs;
    std::unordered_set<std::string> queued;
    for (const std::filesystem::path& file : expand(line.paths)) {
        if (!queued.insert(file.native()).second)
            continue;
        jobs.push_back({.url = file,
                        .target = line.target,
                        .size = line.size,
                        .removeAudio = line.removeAudio});
    }
    return jobs;
}

/// In `analyze` a job has ended well when it is ready, whatever stands in the way of converting it.
Counts count(const std::vector<Job>& jobs, Command command) {
    const bool converts = command == Command::convert;
    const Job::State good = converts ? Job::State::done : Job::State::ready;
    const auto number = [&](auto predicate) {
        return static_cast<int>(std::ranges::count_if(jobs, predicate));
    };
    return {.done = number([&](const Job& job) { return job.state == good; }),
            .failed = number([](const Job& job) { return job.state == Job::State::failed; }),
            .blocked = number([&](const Job& job) { return converts && blocker(job); })};
}

ExitStatus statusOf(const std::vector<Job>& jobs, const Counts& counts) {
    return counts.done == static_cast<int>(jobs.size()) ? ExitStatus::allWell
                                                        : ExitStatus::someFailed;
}

unsigned coreCount() {
    return std::max(1u, std::thread::hardware_concurrency());
}

} // namespace

ExitStatus drive(const CommandLine& commandLine, const Engine& engine, const LineSink& sink,
                 const std::stop_token& stop) {
    std::stop_source stopSource;
    const std::stop_callback forward(stop, [&] { stopSource.request_stop(); });
    EventWriter events(sink, stopSource);
    std::vector<Job> jobs = makeJobs(commandLine);
    analyzeJobs(jobs, engine, coreCount(), events, stopSource.get_token());
    if (commandLine.command == Command::convert)
        convertJobs(jobs, commandLine.outputDir, engine, events, stopSource.get_token());
    const bool wasStopped = stop.stop_requested();
    const Counts counts = count(jobs, commandLine.command);
    events.write(finishedEvent(counts));
    if (wasStopped)
        return ExitStatus::stopped;
    return events.isBroken() ? ExitStatus::someFailed : statusOf(jobs, counts);
}

} // namespace boxlift::drive
