#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "queue/preferences.h"

namespace boxlift::drive {

/// Forgets everything at its end, so that the tool leaves the user's own preferences alone. Main
/// thread.
class MemoryPreferences : public Preferences {
public:
    std::optional<std::string> string(std::string_view key) const override {
        const auto found = m_values.find(key);
        return found == m_values.end() ? std::nullopt : std::optional(found->second);
    }
    void setString(std::string_view key, const std::string& value) override {
        m_values.insert_or_assign(std::string(key), value);
    }

private:
    std::map<std::string, std::string, std::less<>> m_values;
};

} // namespace boxlift::drive
