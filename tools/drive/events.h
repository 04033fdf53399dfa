#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "model/mode.h"
#include "queue/job.h"

/// The tool's events, each as a line of JSON without its line end.
namespace boxlift::drive {

/// How the jobs have ended.
struct Counts {
    int done = 0;
    int failed = 0;
    int blocked = 0;
};

/// `job` is analysed.
std::string readyEvent(const Job& job);
std::string failedEvent(const std::filesystem::path& url, std::string_view message);
std::string progressEvent(const std::filesystem::path& url, double fraction);
std::string doneEvent(const std::filesystem::path& url, const std::filesystem::path& output,
                      Mode mode, double seconds);
std::string cancelledEvent(const std::filesystem::path& url);
std::string finishedEvent(const Counts& counts);

} // namespace boxlift::drive
