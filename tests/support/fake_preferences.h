#pragma once

#include <functional>
#include <map>
#include <utility>
#include <vector>

#include "queue/preferences.h"

namespace boxlift::test {

/// Preferences in memory. Main thread.
class FakePreferences : public Preferences {
public:
    std::optional<std::string> string(std::string_view key) const override {
        const auto found = values.find(key);
        return found == values.end() ? std::nullopt : std::optional(found->second);
    }

    void setString(std::string_view key, const std::string& value) override {
        values[std::string(key)] = value;
        writes.emplace_back(key, value);
    }

    std::map<std::string, std::string, std::less<>> values;
    /// In their order.
    std::vector<std::pair<std::string, std::string>> writes;
};

} // namespace boxlift::test
