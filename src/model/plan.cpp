#include "model/plan.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

namespace boxlift {

namespace {

/// What the rules look at.
struct Request {
    const MediaInfo& info;
    SizeOption size;
    bool keepAudio;
};

constexpr std::array audioOfMp4{fourCharCode("aac ")};
constexpr std::array audioOfM4a{fourCharCode("aac "), fourCharCode("alac")};
constexpr std::array audioOfMov{fourCharCode("aac "), fourCharCode("lpcm"), fourCharCode("alac")};

bool isOneOf(std::optional<FourCharCode> code, std::span<const FourCharCode> codes) {
    return code && std::ranges::find(codes, *code) != codes.end();
}

bool always(const Request&) {
    return true;
}

bool isScaled(const Request& request) {
    return request.size != SizeOption::original && request.info.hasVideo;
}

bool videoIsNotH264(const Request& request) {
    return request.info.videoCodec != fourCharCode("avc1");
}

bool m4aHoldsAudio(const Request& request) {
    return isOneOf(request.info.audioCodec, audioOfM4a);
}

bool mp4HoldsAudio(const Request& request) {
    return !request.keepAudio || isOneOf(request.info.audioCodec, audioOfMp4);
}

// Unlike in the other containers, audio of an unknown kind counts as fitting.
bool movHoldsAudio(const Request& request) {
    return !request.keepAudio || !request.info.audioCodec ||
           isOneOf(request.info.audioCodec, audioOfMov);
}

std::string nothing(const Request&) {
    return {};
}
std::string video(const Request& request) {
    return MediaInfo::videoName(request.info.videoCodec);
}
std::string audio(const Request& request) {
    return MediaInfo::audioName(request.info.audioCodec);
}
std::string sizeLabel(const Request& request) {
    return std::string(label(request.size));
}

/// Where the condition holds, the detail is prefix + subject + suffix.
struct Rule {
    Target target;
    bool (*condition)(const Request&);
    Mode mode;
    std::string_view prefix;
    std::string (*subject)(const Request&);
    std::string_view suffix;
};

// The first rule of the target whose condition holds gives the plan; each target ends with one that
// always does.
constexpr std::array rules{
    Rule{Target::aac, always, Mode::reencode, "Audio encoded to AAC at 128 kbps", nothing, ""},

    Rule{Target::m4a, m4aHoldsAudio, Mode::boxlift, "", audio,
         " audio copied as-is, no quality loss"},
    Rule{Target::m4a, always, Mode::reencode, "", audio, " audio converted to AAC"},

    Rule{Target::mp4, isScaled, Mode::reencode, "Video scaled to ", sizeLabel, ""},
    Rule{Target::mp4, videoIsNotH264, Mode::reencode, "", video, " video converted to H.264"},
    Rule{Target::mp4, mp4HoldsAudio, Mode::boxlift,
         "H.264 and AAC already compatible, no quality loss", nothing, ""},
    Rule{Target::mp4, always, Mode::reencode, "", audio, " audio converted to AAC"},

    Rule{Target::mov, isScaled, Mode::reencode, "Video scaled to ", sizeLabel, ""},
    Rule{Target::mov, movHoldsAudio, Mode::boxlift, "Tracks copied into a MOV, no quality loss",
         nothing, ""},
    Rule{Target::mov, always, Mode::reencode, "", audio,
         " audio isn't MOV-compatible, re-encoding"},
};

} // namespace

Plan Converter::plan(const MediaInfo& info, Target target, SizeOption size, bool removeAudio) {
    const Request request{info, size, info.hasAudio && !removeAudio};
    const auto rule = std::ranges::find_if(rules, [&](const Rule& candidate) {
        return candidate.target == target && candidate.condition(request);
    });
    return {rule->mode,
            std::string(rule->prefix) + rule->subject(request) + std::string(rule->suffix)};
}

} // namespace boxlift
