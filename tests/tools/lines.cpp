#include "tools/lines.h"

#include <algorithm>
#include <chrono>

namespace boxlift::drive::test {

constexpr std::chrono::seconds patience{10};

LineSink Lines::sink() {
    return [this](std::string_view line) {
        const std::scoped_lock lock(m_mutex);
        m_lines.emplace_back(line.substr(0, line.find('\n')));
        m_added.notify_all();
        return true;
    };
}

std::vector<std::string> Lines::all() const {
    const std::scoped_lock lock(m_mutex);
    return m_lines;
}

std::vector<std::string> Lines::with(std::string_view text) const {
    std::vector<std::string> result = all();
    std::erase_if(result,
                  [&](const std::string& line) { return line.find(text) == std::string::npos; });
    return result;
}

bool Lines::waitFor(std::string_view text) const {
    std::unique_lock lock(m_mutex);
    return m_added.wait_for(lock, patience, [&] { return hasLocked(text); });
}

bool Lines::hasLocked(std::string_view text) const {
    return std::ranges::any_of(
        m_lines, [&](const std::string& line) { return line.find(text) != std::string::npos; });
}

} // namespace boxlift::drive::test
