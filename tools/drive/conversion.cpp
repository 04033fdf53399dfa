#include "drive/conversion.h"

#include <chrono>
#include <memory>
#include <string>
#include <system_error>
#include <thread>

#include "drive/events.h"
#include "drive/failure_message.h"
#include "drive/progress_relay.h"
#include "model/job_rules.h"

namespace boxlift::drive {

namespace {

namespace fs = std::filesystem;

struct Outcome {
    enum class Kind { done, failed, cancelled };

    Kind kind = Kind::cancelled;
    Mode mode = Mode::reencode; ///< of a done one
    std::string message;        ///< of a failed one
};

/// A dangling link takes its name, too.
bool isTaken(const fs::path& path) {
    std::error_code error;
    return fs::exists(fs::symlink_status(path, error));
}

fs::path outputPath(const Job& job, const fs::path& outputDir) {
    const auto isNameTaken = [&](const std::string& name) { return isTaken(outputDir / name); };
    return outputDir / outputName(job.url.filename().native(), job.target, isNameTaken);
}

/// The whole conversion; off the main thread.
Outcome attempt(const Job& job, const fs::path& output, const Engine& engine,
                const Converter::Progress& progress, const std::stop_token& stop) {
    try {
        const Mode mode = engine.convert(job.url, *job.info, job.target, job.size, job.removeAudio,
                                         output, progress, stop);
        return {Outcome::Kind::done, mode, {}};
    } catch (const Cancelled&) {
        return {};
    } catch (...) {
        if (stop.stop_requested())
            return {};
        return {Outcome::Kind::failed, {}, failureMessage()};
    }
}

/// Runs the conversion on a thread of its own and prints its progress meanwhile.
Outcome convert(const Job& job, const fs::path& output, const Engine& engine, EventWriter& events,
                const std::stop_token& stop) {
    // Shared with the engine, which may report late.
    const auto relay = std::make_shared<ProgressRelay>();
    Outcome outcome;
    std::jthread worker([&] {
        outcome = attempt(
            job, output, engine, [relay](double fraction) { relay->report(fraction); }, stop);
        if (outcome.kind == Outcome::Kind::done)
            relay->report(1.0);
        relay->close();
    });
    while (const auto fraction = relay->next())
        events.write(progressEvent(job.url, *fraction));
    worker.join();
    return outcome;
}

void convertJob(Job& job, const fs::path& outputDir, const Engine& engine, EventWriter& events,
                const std::stop_token& stop) {
    const fs::path output = outputPath(job, outputDir);
    const auto start = std::chrono::steady_clock::now();
    // Without the folder the conversion fails and says so.
    std::error_code ignored;
    fs::create_directories(outputDir, ignored);
    const Outcome outcome = convert(job, output, engine, events, stop);
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    switch (outcome.kind) {
    case Outcome::Kind::done:
        job.state = Job::State::done;
        return events.write(doneEvent(job.url, output, outcome.mode, elapsed.count()));
    case Outcome::Kind::failed:
        job.state = Job::State::failed;
        return events.write(failedEvent(job.url, outcome.message));
    case Outcome::Kind::cancelled:
        return events.write(cancelledEvent(job.url));
    }
}

} // namespace

void convertJobs(std::span<Job> jobs, const fs::path& outputDir, const Engine& engine,
                 EventWriter& events, const std::stop_token& stop) {
    for (Job& job : jobs) {
        if (!canConvert(job))
            continue;
        if (stop.stop_requested())
            return;
        convertJob(job, outputDir, engine, events, stop);
    }
}

} // namespace boxlift::drive
