#include "drive/event_writer.h"

#include <utility>

namespace boxlift::drive {

EventWriter::EventWriter(LineSink sink, std::stop_source stop)
    : m_sink(std::move(sink)), m_stop(std::move(stop)) {}

void EventWriter::write(std::string event) {
    event += '\n';
    {
        const std::scoped_lock lock(m_mutex);
        if (m_isBroken || m_sink(event))
            return;
        m_isBroken = true;
    }
    m_stop.request_stop();
}

bool EventWriter::isBroken() const {
    const std::scoped_lock lock(m_mutex);
    return m_isBroken;
}

} // namespace boxlift::drive
