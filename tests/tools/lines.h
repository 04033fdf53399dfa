#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "drive/event_writer.h"

namespace boxlift::drive::test {

/// Keeps the lines that are written. Any thread.
class Lines {
public:
    LineSink sink();
    /// Without their line ends.
    std::vector<std::string> all() const;
    /// Those in which `text` occurs.
    std::vector<std::string> with(std::string_view text) const;
    /// Waits until `text` occurs in a line, at most 10 s; false when it does not.
    bool waitFor(std::string_view text) const;

private:
    bool hasLocked(std::string_view text) const;

    mutable std::mutex m_mutex;
    mutable std::condition_variable m_added;
    std::vector<std::string> m_lines;
};

} // namespace boxlift::drive::test
