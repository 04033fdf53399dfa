#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace boxlift::drive {

/// `bytes` as a JSON string, quotes included. UTF-8 is kept; each byte that is not part of
/// well-formed UTF-8 becomes the escape of a lone surrogate, 0xDC00 + byte.
std::string jsonText(std::string_view bytes);

/// The shortest decimal number that reads back as `value`; "null" when it is not finite.
std::string jsonNumber(double value);

/// Builds a JSON object on one line; members stand in the order in which they are added. Keys are
/// plain ASCII.
class JsonObject {
public:
    JsonObject& text(std::string_view key, std::string_view value);
    JsonObject& textOrNull(std::string_view key, const std::optional<std::string>& value);
    JsonObject& number(std::string_view key, double value);
    JsonObject& integer(std::string_view key, std::int64_t value);
    JsonObject& boolean(std::string_view key, bool value);
    JsonObject& object(std::string_view key, const JsonObject& value);
    JsonObject& objectOrNull(std::string_view key, const std::optional<JsonObject>& value);

    std::string line() const { return "{" + m_members + "}"; }

private:
    JsonObject& add(std::string_view key, std::string_view value);

    std::string m_members;
};

} // namespace boxlift::drive
