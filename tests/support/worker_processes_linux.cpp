#include "support/worker_processes.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <system_error>

#include <sys/stat.h>

namespace boxlift::test {

namespace {

namespace fs = std::filesystem;

struct Facts {
    char state = 'X';
    pid_t parent = 0;
    unsigned long long started = 0;
};

/// Nothing of a process that ends meanwhile: reading from it fails then.
std::string contentsOf(const fs::path& path) {
    const std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

/// Of proc(5)'s stat line, whose second field may hold anything.
Facts factsOf(const fs::path& folder) {
    const std::string line = contentsOf(folder / "stat");
    const auto nameEnd = line.rfind(')');
    if (nameEnd == std::string::npos)
        return {};
    std::istringstream fields(line.substr(nameEnd + 1));
    Facts facts;
    fields >> facts.state >> facts.parent;
    std::string skipped;
    for (int field = 5; field < 22; ++field)
        fields >> skipped;
    fields >> facts.started;
    return facts;
}

bool isWorker(const fs::path& folder, std::string_view role) {
    const std::string command = contentsOf(folder / "cmdline");
    return command.ends_with(std::string("boxlift-worker\0", 15) + std::string(role) + '\0');
}

} // namespace

std::vector<pid_t> workersOf(pid_t parent, std::string_view role) {
    std::vector<std::pair<unsigned long long, pid_t>> found;
    std::error_code error;
    for (fs::directory_iterator entry("/proc", error), end; !error && entry != end;
         entry.increment(error)) {
        const pid_t id = std::atoi(entry->path().filename().c_str());
        if (id <= 0 || !isWorker(entry->path(), role))
            continue;
        const Facts facts = factsOf(entry->path());
        if (facts.parent == parent && facts.state != 'Z' && facts.state != 'X')
            found.emplace_back(facts.started, id);
    }
    std::ranges::sort(found);
    std::vector<pid_t> ids;
    for (const auto& [started, id] : found)
        ids.push_back(id);
    return ids;
}

bool isRunning(pid_t process) {
    const char state = factsOf(fs::path("/proc") / std::to_string(process)).state;
    return state != 'Z' && state != 'X';
}

off_t openOutputSize(pid_t process, std::string_view folder) {
    const fs::path descriptors = fs::path("/proc") / std::to_string(process) / "fd";
    std::error_code error;
    for (fs::directory_iterator entry(descriptors, error), end; !error && entry != end;
         entry.increment(error)) {
        std::error_code gone;
        const std::string target = fs::read_symlink(entry->path(), gone).native();
        const bool isOutput = target.starts_with(folder) &&
                              (target.ends_with(" (deleted)") || target.ends_with(".part"));
        struct stat status {};
        if (isOutput && ::stat(entry->path().c_str(), &status) == 0)
            return status.st_size;
    }
    return -1;
}

} // namespace boxlift::test
