#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace boxlift {

/// What is remembered between runs of the application: strings of any bytes under names. Main
/// thread.
class Preferences {
public:
    virtual ~Preferences() = default;

    virtual std::optional<std::string> string(std::string_view key) const = 0;
    virtual void setString(std::string_view key, const std::string& value) = 0;
};

} // namespace boxlift
