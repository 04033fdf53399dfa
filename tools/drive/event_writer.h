#pragma once

#include <functional>
#include <mutex>
#include <stop_token>
#include <string>
#include <string_view>

namespace boxlift::drive {

/// Takes one whole line, its line end included; false when it could not be written.
using LineSink = std::function<bool(std::string_view line)>;

/// Hands events to a sink one after another. The first one that cannot be written is the last:
/// nobody reads any more, so a stop is requested. Any thread.
class EventWriter {
public:
    EventWriter(LineSink sink, std::stop_source stop);

    void write(std::string event);
    bool isBroken() const;

private:
    const LineSink m_sink;
    std::stop_source m_stop;
    mutable std::mutex m_mutex;
    bool m_isBroken = false;
};

} // namespace boxlift::drive
