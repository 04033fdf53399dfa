#pragma once

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "worker/protocol/message.h"

/// How messages become bytes and bytes messages. Both ends are on one machine: numbers are in its
/// own order.
namespace boxlift::worker {

/// The members of a struct that are sent, a tuple of pointers to them.
template <typename Struct>
inline constexpr auto members = nullptr;

/// The number of values of an enumeration that is sent; they begin with 0.
template <typename Enumeration>
inline constexpr unsigned valueCount = 0;

class Writer {
public:
    std::vector<std::byte> take() { return std::move(m_bytes); }

    template <typename Value>
    void put(const Value& value) {
        if constexpr (std::is_enum_v<Value> || std::is_same_v<Value, bool>)
            putNumber(static_cast<std::uint8_t>(value));
        else if constexpr (std::is_arithmetic_v<Value>)
            putNumber(value);
        else
            std::apply([&](auto... member) { (put(value.*member), ...); }, members<Value>);
    }

    void put(const std::string& text) {
        putNumber(static_cast<std::uint32_t>(text.size()));
        putBytes(text.data(), text.size());
    }

    void put(const std::filesystem::path& path) { put(path.native()); }

    template <typename Value>
    void put(const std::optional<Value>& value) {
        put(value.has_value());
        if (value)
            put(*value);
    }

    template <typename... Alternatives>
    void put(const std::variant<Alternatives...>& value) {
        putNumber(static_cast<std::uint8_t>(value.index()));
        std::visit([this](const auto& alternative) { this->put(alternative); }, value);
    }

private:
    template <typename Number>
    void putNumber(Number number) {
        putBytes(&number, sizeof number);
    }

    void putBytes(const void* data, std::size_t size) {
        const auto* bytes = static_cast<const std::byte*>(data);
        m_bytes.insert(m_bytes.end(), bytes, bytes + size);
    }

    std::vector<std::byte> m_bytes;
};

/// Throws MalformedMessage for what no Writer writes.
class Reader {
public:
    explicit Reader(std::span<const std::byte> bytes) : m_bytes(bytes) {}

    void expectEnd() const {
        if (!m_bytes.empty())
            throw MalformedMessage("there is more than the message");
    }

    template <typename Value>
    void get(Value& value) {
        if constexpr (std::is_same_v<Value, bool>)
            value = getIndex(2) == 1;
        else if constexpr (std::is_enum_v<Value>)
            value = static_cast<Value>(getIndex(valueCount<Value>));
        else if constexpr (std::is_arithmetic_v<Value>)
            std::memcpy(&value, getBytes(sizeof value).data(), sizeof value);
        else
            std::apply([&](auto... member) { (get(value.*member), ...); }, members<Value>);
    }

    void get(std::string& text) {
        std::uint32_t size = 0;
        get(size);
        const auto bytes = getBytes(size);
        text.assign(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    }

    void get(std::filesystem::path& path) {
        std::string text;
        get(text);
        path = std::move(text);
    }

    template <typename Value>
    void get(std::optional<Value>& value) {
        bool hasValue = false;
        get(hasValue);
        if (hasValue)
            get(value.emplace());
    }

    template <typename... Alternatives>
    void get(std::variant<Alternatives...>& value) {
        const unsigned index = getIndex(sizeof...(Alternatives));
        unsigned candidate = 0;
        ((candidate++ == index ? get(value.template emplace<Alternatives>()) : void()), ...);
    }

private:
    std::span<const std::byte> getBytes(std::size_t size) {
        if (size > m_bytes.size())
            throw MalformedMessage("the message is cut short");
        const auto bytes = m_bytes.first(size);
        m_bytes = m_bytes.subspan(size);
        return bytes;
    }

    unsigned getIndex(unsigned count) {
        const auto value = std::to_integer<unsigned>(getBytes(1).front());
        if (value >= count)
            throw MalformedMessage("a value is out of range");
        return value;
    }

    std::span<const std::byte> m_bytes;
};

} // namespace boxlift::worker
