#include "drive/json_line.h"

#include <array>
#include <charconv>
#include <cmath>

namespace boxlift::drive {

namespace {

/// One row of the table of well-formed UTF-8 (Unicode, table 3-7): first bytes, the range of the
/// second byte, the length. Bytes behind the second are 80 to BF.
struct Utf8Row {
    unsigned char firstFrom, firstTo;
    unsigned char secondFrom, secondTo;
    std::size_t length;
};

constexpr auto utf8Rows = std::to_array<Utf8Row>({
    {0x00, 0x7F, 0x00, 0x00, 1},
    {0xC2, 0xDF, 0x80, 0xBF, 2},
    {0xE0, 0xE0, 0xA0, 0xBF, 3},
    {0xE1, 0xEC, 0x80, 0xBF, 3},
    {0xED, 0xED, 0x80, 0x9F, 3},
    {0xEE, 0xEF, 0x80, 0xBF, 3},
    {0xF0, 0xF0, 0x90, 0xBF, 4},
    {0xF1, 0xF3, 0x80, 0xBF, 4},
    {0xF4, 0xF4, 0x80, 0x8F, 4},
});

bool isWithin(char c, unsigned char from, unsigned char to) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= from && byte <= to;
}

bool startsWith(std::string_view bytes, const Utf8Row& row) {
    if (bytes.size() < row.length || !isWithin(bytes[0], row.firstFrom, row.firstTo))
        return false;
    if (row.length > 1 && !isWithin(bytes[1], row.secondFrom, row.secondTo))
        return false;
    for (std::size_t i = 2; i < row.length; ++i) {
        if (!isWithin(bytes[i], 0x80, 0xBF))
            return false;
    }
    return true;
}

/// Length of the character at the start of `bytes` (not empty); 0 when there is none.
std::size_t characterLength(std::string_view bytes) {
    for (const Utf8Row& row : utf8Rows) {
        if (startsWith(bytes, row))
            return row.length;
    }
    return 0;
}

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
    if (isWithin(first, 0x00, 0x1F))
        return unicodeEscape(static_cast<unsigned char>(first));
    return std::string(character);
}

} // namespace

std::string jsonText(std::string_view bytes) {
    std::string result = "\"";
    while (!bytes.empty()) {
        const std::size_t length = characterLength(bytes);
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
