#pragma once

#include <mutex>
#include <vector>

#include "engine/converter.h"

namespace boxlift::fakes {

/// Remembers the fractions that are reported. Any thread.
class Recorder {
public:
    Converter::Progress callback() {
        return [this](double fraction) {
            const std::lock_guard lock(m_mutex);
            m_fractions.push_back(fraction);
        };
    }

    std::vector<double> fractions() const {
        const std::lock_guard lock(m_mutex);
        return m_fractions;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<double> m_fractions;
};

} // namespace boxlift::fakes
