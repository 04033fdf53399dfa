#include "fuzz/mutant.h"

#include <algorithm>
#include <array>
#include <random>
#include <vector>

namespace boxlift::test {

namespace {

/// What numbers in headers are replaced by, besides neighbours of their own.
constexpr std::array<std::uint64_t, 16> lies{0,
                                             1,
                                             7,
                                             8,
                                             0x7f,
                                             0xff,
                                             0x7fff,
                                             0xffff,
                                             0x10000,
                                             0xffffff,
                                             0x7fffffff,
                                             0x80000000,
                                             0xfffffff0,
                                             0xffffffff,
                                             0x01ffffffffffffff,
                                             0xffffffffffffffff};

bool isCodeCharacter(char byte) {
    const auto value = static_cast<unsigned char>(byte);
    return (value >= 'a' && value <= 'z') || (value >= 'A' && value <= 'Z') ||
           (value >= '0' && value <= '9') || value == ' ' || value == '#' || value == 0xa9;
}

/// The first bytes of the names of elements in Matroska files.
bool isElementName(std::string_view code) {
    constexpr std::string_view starts = "\x1a\x18\x16\x15\x11\x1f";
    return starts.find(code[0]) != std::string_view::npos &&
           (static_cast<unsigned char>(code[1]) & 0x80 || code[1] >= 0x40);
}

class Mutator {
public:
    Mutator(std::string_view file, std::uint32_t number)
        : m_random(number), m_bytes(file), m_codes(codesIn(file)) {}

    Mutant run() {
        const std::size_t count = 1 + below(3);
        for (std::size_t i = 0; i < count && !m_bytes.empty(); ++i)
            damageOnce();
        return {std::move(m_bytes), std::move(m_damage)};
    }

private:
    /// Where the names of boxes, chunks and elements are.
    static std::vector<std::size_t> codesIn(std::string_view file) {
        std::vector<std::size_t> places;
        for (std::size_t at = 0; at + 8 <= file.size(); ++at) {
            const std::string_view code = file.substr(at, 4);
            const bool isBox = at >= 4 && file[at - 4] == 0 && file[at - 3] == 0;
            const bool isChunk = at % 2 == 0 && (file[at + 6] == 0 || file[at + 4] == 0);
            if (((isBox || isChunk) && std::ranges::all_of(code, isCodeCharacter)) ||
                isElementName(code))
                places.push_back(at);
        }
        return places;
    }

    std::size_t below(std::size_t limit) { return limit ? m_random() % limit : 0; }

    /// Half of the time near the beginning, where headers are.
    std::size_t place() {
        const std::size_t reach =
            below(2) ? m_bytes.size() : std::min<std::size_t>(512, m_bytes.size());
        return below(reach);
    }

    void damageOnce() {
        switch (below(10)) {
        case 0:
            return cutOffEnd();
        case 1:
            return cutOut();
        case 2:
            return swapPieces();
        case 3:
            return doublePiece();
        case 4:
        case 5:
            return flipBits();
        default:
            return lie();
        }
    }

    void note(std::string_view what, std::size_t at, std::size_t size) {
        m_damage.append(m_damage.empty() ? "" : "; ").append(what);
        m_damage.append(" at ").append(std::to_string(at)).append(", ");
        m_damage.append(std::to_string(size)).append(" bytes");
    }

    void cutOffEnd() {
        const std::size_t at = place();
        note("cut off", at, m_bytes.size() - at);
        m_bytes.resize(at);
    }

    std::size_t pieceAt(std::size_t at) {
        constexpr std::size_t longest = 4096;
        return 1 + below(std::min(longest, m_bytes.size() - at));
    }

    void cutOut() {
        const std::size_t at = place();
        const std::size_t size = pieceAt(at);
        note("cut out", at, size);
        m_bytes.erase(at, size);
    }

    void swapPieces() {
        const std::size_t first = place();
        const std::size_t second = place();
        const std::size_t size = std::min(pieceAt(first), pieceAt(second));
        note("swapped with " + std::to_string(second), first, size);
        for (std::size_t i = 0; i < size; ++i)
            std::swap(m_bytes[first + i], m_bytes[second + i]);
    }

    void doublePiece() {
        const std::size_t at = place();
        const std::size_t size = pieceAt(at);
        note("doubled", at, size);
        m_bytes.insert(at, m_bytes.substr(at, size));
    }

    void flipBits() {
        const std::size_t count = 1 + below(16);
        const std::size_t at = place();
        const std::size_t reach = std::min<std::size_t>(64, m_bytes.size() - at);
        note("flipped " + std::to_string(count) + " bits", at, reach);
        for (std::size_t i = 0; i < count; ++i) {
            char& byte = m_bytes[at + below(reach)];
            byte = static_cast<char>(byte ^ 1 << below(8));
        }
    }

    /// Mostly beside a name: the size before or behind it, or a number among what it names.
    void lie() {
        constexpr std::array<int, 10> offsets{-4, -4, -4, 4, 4, 8, 8, 12, 16, 20};
        constexpr std::array<std::size_t, 6> widths{4, 4, 4, 8, 2, 1};
        std::size_t at = place();
        if (!m_codes.empty() && below(8) > 0)
            at = m_codes[below(m_codes.size())] +
                 static_cast<std::size_t>(offsets[below(offsets.size())]);
        const std::size_t width = widths[below(widths.size())];
        const bool isBigEndian = below(4) > 0;
        // What was cut before, or the beginning.
        if (at >= m_bytes.size() || m_bytes.size() - at < width)
            return flipBits();
        const std::uint64_t value = lieAbout(numberAt(at, width, isBigEndian));
        note("set to " + std::to_string(value) + (isBigEndian ? "" : " (little-endian)"), at,
             width);
        for (std::size_t i = 0; i < width; ++i)
            m_bytes[at + i] =
                static_cast<char>(value >> 8 * (isBigEndian ? width - 1 - i : i) & 0xff);
    }

    std::uint64_t lieAbout(std::uint64_t truth) {
        switch (below(8)) {
        case 0:
            return truth + 1;
        case 1:
            return truth - 1;
        case 2:
            return truth * 2;
        case 3:
            return ~truth;
        default:
            return lies[below(lies.size())];
        }
    }

    std::uint64_t numberAt(std::size_t at, std::size_t width, bool isBigEndian) const {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < width; ++i)
            value = value << 8 |
                    static_cast<unsigned char>(m_bytes[at + (isBigEndian ? i : width - 1 - i)]);
        return value;
    }

    std::mt19937 m_random;
    std::string m_bytes;
    std::string m_damage;
    const std::vector<std::size_t> m_codes;
};

} // namespace

Mutant mutate(std::string_view file, std::uint32_t number) {
    return Mutator(file, number).run();
}

} // namespace boxlift::test
