#include "fidelity/tag_losses.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace boxlift::fidelity {

namespace {

/// Keys that tell of the container and its making, not of what is in it.
constexpr std::array containerKeys{
    "major_brand", "minor_version", "compatible_brands", "itunsmpb",
    "timecode",    "vendor_id",     "handler_name",      "gapless_playback",
};

/// The same thing under another name.
struct AliasRow {
    std::string_view key;
    std::string_view alias;
};

constexpr std::array aliases{
    AliasRow{"make", "com.apple.quicktime.make"},
    AliasRow{"model", "com.apple.quicktime.model"},
    AliasRow{"location", "com.apple.quicktime.location.iso6709"},
};

/// The libraries do not tell capitals in keys apart.
Tags lowered(const Tags& tags) {
    Tags result;
    for (const auto& [key, value] : tags) {
        std::string name;
        for (const char letter : key)
            name += letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
        result.emplace(std::move(name), value);
    }
    return result;
}

/// "01/010" and "1/10" are the same number of numbers.
std::string withoutLeadingZeros(const std::string& text) {
    std::string result;
    for (const char character : text)
        if (character != '0' || (!result.empty() && result.back() != '/'))
            result += character;
    return result;
}

bool startsWith(const std::string& text, std::string_view start) {
    return std::string_view(text).starts_with(start);
}

bool isNumber(const std::string& text) {
    return !text.empty() && text.find_first_not_of("0123456789.-") == std::string::npos;
}

/// Not a day, or the beginning of the computer's time.
bool isOddDate(const std::string& text) {
    const bool isDay = text.size() >= 10 && text[4] == '-' && text[7] == '-';
    return !isDay || startsWith(text, "1970-01-01T00:00:00");
}

class TagComparison {
public:
    TagComparison(const Tags& source, const Tags& output)
        : m_source(lowered(source)), m_output(lowered(output)) {}

    std::vector<Loss> run() const {
        std::vector<Loss> losses;
        for (const auto& [key, value] : m_source) {
            const bool isContainers =
                std::ranges::count(containerKeys, key) > 0 || startsWith(key, "encod");
            if (!isContainers && !key.empty() && !value.empty() && !isKept(key, value) &&
                !isTranslation(key))
                losses.push_back(lossOf(key, value));
        }
        return losses;
    }

private:
    bool isKept(const std::string& key, const std::string& value) const {
        const auto isThere = [&](const std::string& name) {
            const auto found = m_output.find(name);
            return found != m_output.end() &&
                   withoutLeadingZeros(found->second) == withoutLeadingZeros(value);
        };
        return isThere(key) || std::ranges::any_of(aliases, [&](const AliasRow& row) {
                   return row.key == key && isThere(std::string(row.alias));
               });
    }

    /// "title-eng" beside "title".
    bool isTranslation(const std::string& key) const {
        constexpr std::size_t suffix = 4;
        return key.size() > suffix && key[key.size() - suffix] == '-' &&
               m_source.contains(key.substr(0, key.size() - suffix));
    }

    Loss lossOf(const std::string& key, const std::string& value) const {
        if (startsWith(key, "com.") && isNumber(value))
            return {"numbered key", key};
        if (startsWith(key, "com.apple.finalcutstudio."))
            return {"key of one program", key};
        if (startsWith(key, "id3v2_priv."))
            return {"private tag", key};
        if (key == "creation_time" && isOddDate(value))
            return {"odd date", value};
        if ((key == "track" || key == "disc") && !isNumber(value.substr(0, 1)))
            return {"odd number", value};
        return {m_output.contains(key) ? "tag with another value" : "tag", key};
    }

    Tags m_source;
    Tags m_output;
};

} // namespace

std::vector<Loss> tagLosses(const Tags& source, const Tags& output) {
    return TagComparison(source, output).run();
}

} // namespace boxlift::fidelity
