#include "drive/json_line.h"

#include <array>
#include <charconv>
#include <cmath>

#include "model/utf8.h"

namespace boxlift::drive {

namespace {

std::string unicodeEscape(unsigned code) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string result = "\\u";
    for (int shift = 12; shift >= 0; shift -= 4)
        result += digits[(code >> shift) & 0xF];
    return result;
}

std::string escapedCharacter(std::string_view character) {
    const char first = character.front();
    if (first == '"' || first == '\\')
        return std::string("\\") + first;
    if (const auto byte = static_cast<unsigned char>(first); byte < 0x20)
        return unicodeEscape(byte);
    return std::string(character);
}

} // namespace

std::string jsonText(std::string_view bytes) {
    std::string result = "\"";
    while (!bytes.empty()) {
        const std::size_t length = utf8Length(bytes);
        if (length == 0)
            result += unicodeEscape(0xDC00u + static_cast<unsigned char>(bytes.front()));
        else
            result += escapedCharacter(bytes.substr(0, length));
        bytes.remove_prefix(length == 0 ? 1 : length);
    }
    return result + "\"";
}

std::string jsonNumber(double value) {
    if (!std::isfinite(value))
        return "null";
    std::array<char, 32> buffer;
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
    return {buffer.data(), end};
}

JsonObject& JsonObject::text(std::string_view key, std::string_view value) {
    return add(key, jsonText(value));
}

JsonObject& JsonObject::textOrNull(std::string_view key, const std::optional<std::string>& value) {
    return add(key, value ? jsonText(*value) : "null");
}

JsonObject& JsonObject::number(std::string_view key, double value) {
    return add(key, jsonNumber(value));
}

JsonObject& JsonObject::integer(std::string_view key, std::int64_t value) {
    return add(key, std::to_string(value));
}

JsonObject& JsonObject::boolean(std::string_view key, bool value) {
    return add(key, value ? "true" : "false");
}

JsonObject& JsonObject::object(std::string_view key, const JsonObject& value) {
    return add(key, value.line());
}

JsonObject& JsonObject::objectOrNull(std::string_view key, const std::optional<JsonObject>& value) {
    return add(key, value ? value->line() : "null");
}

JsonObject& JsonObject::add(std::string_view key, std::string_view value) {
    if (!m_members.empty())
        m_members += ',';
    m_members += jsonText(key);
    m_members += ':';
    m_members += value;
    return *this;
}

} // namespace boxlift::drive
