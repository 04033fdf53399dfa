#pragma once

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

namespace boxlift::fakes {

/// What the engine asked of the media layer, in order. Any thread.
class EventLog {
public:
    void add(std::string event) {
        const std::lock_guard lock(m_mutex);
        m_events.push_back(std::move(event));
    }

    std::vector<std::string> all() const {
        const std::lock_guard lock(m_mutex);
        return m_events;
    }

    bool contains(const std::string& event) const {
        const auto events = all();
        return std::find(events.begin(), events.end(), event) != events.end();
    }

private:
    mutable std::mutex m_mutex;
    std::vector<std::string> m_events;
};

} // namespace boxlift::fakes
