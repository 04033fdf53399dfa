#include "model/media_info.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

#include "model/mac_roman.h"

namespace boxlift {

namespace {

struct CodecName {
    FourCharCode code;
    std::string_view name;
};

constexpr std::array videoNames{
    CodecName{fourCharCode("avc1"), "H.264"},  CodecName{fourCharCode("hvc1"), "HEVC"},
    CodecName{fourCharCode("jpeg"), "MJPEG"},  CodecName{fourCharCode("apch"), "ProRes"},
    CodecName{fourCharCode("apcn"), "ProRes"}, CodecName{fourCharCode("apco"), "ProRes"},
    CodecName{fourCharCode("apcs"), "ProRes"}, CodecName{fourCharCode("ap4h"), "ProRes"},
};

constexpr std::array audioNames{
    CodecName{fourCharCode("aac "), "AAC"},  CodecName{fourCharCode("alac"), "ALAC"},
    CodecName{fourCharCode("flac"), "FLAC"}, CodecName{fourCharCode("lpcm"), "PCM"},
    CodecName{fourCharCode(".mp3"), "MP3"},
};

std::string nameIn(std::span<const CodecName> names, FourCharCode code) {
    const auto row = std::ranges::find(names, code, &CodecName::code);
    return row == names.end() ? MediaInfo::fourCC(code) : std::string(row->name);
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t";
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string twoDigits(std::int64_t number) {
    return (number < 10 ? "0" : "") + std::to_string(number);
}

// An empty piece keeps its separators: a code made of blanks has an empty name.
std::string joined(const std::vector<std::string>& pieces) {
    std::string text;
    for (std::size_t i = 0; i < pieces.size(); ++i)
        text += (i == 0 ? "" : " · ") + pieces[i];
    return text;
}

} // namespace

std::string MediaInfo::fourCC(std::optional<FourCharCode> code) {
    if (!code)
        return "unknown";
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes.push_back(static_cast<char>((*code >> shift) & 0xFF));
    // Both blanks are ASCII, so they may go before the decoding.
    return macRomanToUtf8(trimmed(bytes));
}

std::string MediaInfo::videoName(std::optional<FourCharCode> code) {
    return code ? nameIn(videoNames, *code) : "Video";
}

std::string MediaInfo::audioName(std::optional<FourCharCode> code) {
    return code ? nameIn(audioNames, *code) : "Audio";
}

std::string MediaInfo::format(double seconds) {
    assert(std::abs(seconds) < 0x1p63); // false for NaN as well
    const auto total = static_cast<std::int64_t>(std::round(seconds));
    const std::string tail = ":" + twoDigits(total % 60);
    if (total < 3600)
        return std::to_string(total / 60) + tail;
    return std::to_string(total / 3600) + ":" + twoDigits(total / 60 % 60) + tail;
}

std::string MediaInfo::summary() const {
    std::vector<std::string> pieces;
    if (hasVideo)
        pieces.push_back(videoName(videoCodec) + " " + std::to_string(width) + "×" +
                         std::to_string(height));
    if (hasAudio)
        pieces.push_back(audioName(audioCodec));
    if (duration > 0 && std::isfinite(duration))
        pieces.push_back(format(duration));
    return joined(pieces);
}

} // namespace boxlift
